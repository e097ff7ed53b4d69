#include "basemaps/bbm_layer.h"

#include "display/vgraph.h"

namespace tarno {

BbmLayer::BbmLayer(const BaseMapRow& row) : name_(row.MapName) {
  map_.Connect(row.MapName);  // a wrong signature or version throws BbmError
  if (!map_.Connected()) throw BbmError("BBM file " + row.MapName + " cannot be opened");
  map_.color(row.Color);
}

std::optional<MapExtents> BbmLayer::Extents() const {
  if (map_.Header().Multiplier == 0) return std::nullopt;
  return MapExtents{map_.Left(), map_.Right(), map_.Top(), map_.Bottom()};
}

void BbmLayer::Draw(VGraphGDI& layer) {
  map_.SetUserInterface(layer.UI());
  map_.Draw(layer, true, true, true);
}

std::unique_ptr<BaseMapLayer> OpenBbmLayer(const BaseMapRow& row) {
  return std::make_unique<BbmLayer>(row);
}

}  // namespace tarno
