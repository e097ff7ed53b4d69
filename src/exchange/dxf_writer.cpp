#include "exchange/dxf_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>

#include "core/error.h"

namespace tarno::exchange {

namespace {

// The handles of the skeleton's objects. Layers and entities take theirs from
// kFirstFreeHandle upward.
constexpr const char* kBlockRecordTable = "1";
constexpr const char* kLayerTable = "2";
constexpr const char* kStyleTable = "3";
constexpr const char* kLtypeTable = "5";
constexpr const char* kViewTable = "6";
constexpr const char* kUcsTable = "7";
constexpr const char* kVportTable = "8";
constexpr const char* kAppidTable = "9";
constexpr const char* kDimstyleTable = "A";
constexpr const char* kRootDictionary = "C";
constexpr const char* kGroupDictionary = "D";
constexpr const char* kPlotStyleDictionary = "E";
constexpr const char* kNormalPlotStyle = "F";
constexpr const char* kLayerZero = "10";
constexpr const char* kStandardStyle = "11";
constexpr const char* kAcadAppid = "12";
constexpr const char* kByBlock = "14";
constexpr const char* kByLayer = "15";
constexpr const char* kContinuous = "16";
constexpr const char* kMlineStyleDictionary = "17";
constexpr const char* kStandardMlineStyle = "18";
constexpr const char* kPlotSettingsDictionary = "19";
constexpr const char* kLayoutDictionary = "1A";
constexpr const char* kPaperSpaceRecord = "1B";
constexpr const char* kPaperSpaceBlock = "1C";
constexpr const char* kPaperSpaceEnd = "1D";
constexpr const char* kPaperLayout = "1E";
constexpr const char* kModelSpaceRecord = "1F";
constexpr const char* kModelSpaceBlock = "20";
constexpr const char* kModelSpaceEnd = "21";
constexpr const char* kModelLayout = "22";
constexpr const char* kStandardDimstyle = "27";
constexpr const char* kActiveVport = "29";
constexpr unsigned kFirstFreeHandle = 0x100;

std::string Hex(unsigned v) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%X", v);
  return buf;
}

class Out {
 public:
  Out& G(int code, const std::string& value) {
    text_ += DxfGroup(code, value);
    return *this;
  }
  Out& G(int code, const char* value) { return G(code, std::string(value)); }
  Out& I(int code, long long value) { return G(code, std::to_string(value)); }
  Out& R(int code, double value) { return G(code, DxfReal(value)); }
  // The opening of a table: its name, handle and the number of its entries.
  Out& Table(const char* name, const char* handle, int count) {
    G(0, "TABLE").G(2, name).G(5, handle).G(330, "0").G(100, "AcDbSymbolTable").I(70, count);
    return *this;
  }
  // The reactors and owner of an object owned by a dictionary.
  Out& OwnedBy(const char* owner) {
    G(102, "{ACAD_REACTORS").G(330, owner).G(102, "}").G(330, owner);
    return *this;
  }
  std::string& text() { return text_; }

 private:
  std::string text_;
};

void Header(Out& o, const MapWindow& e, unsigned handseed) {
  o.G(0, "SECTION").G(2, "HEADER");
  o.G(9, "$ACADVER").G(1, "AC1015");
  o.G(9, "$ACADMAINTVER").I(70, 6);
  o.G(9, "$DWGCODEPAGE").G(3, "ANSI_1252");
  o.G(9, "$INSBASE").R(10, 0.0).R(20, 0.0).R(30, 0.0);
  o.G(9, "$EXTMIN").R(10, e.Left).R(20, e.Bottom).R(30, 0.0);
  o.G(9, "$EXTMAX").R(10, e.Right).R(20, e.Top).R(30, 0.0);
  o.G(9, "$LIMMIN").R(10, e.Left).R(20, e.Bottom);
  o.G(9, "$LIMMAX").R(10, e.Right).R(20, e.Top);
  o.G(9, "$HANDSEED").G(5, Hex(handseed));
  o.G(0, "ENDSEC");
  o.G(0, "SECTION").G(2, "CLASSES").G(0, "ENDSEC");
}

void VportTable(Out& o, const MapWindow& e) {
  const double width = std::max(std::abs(e.Right - e.Left), 1e-9);
  const double height = std::max(std::abs(e.Top - e.Bottom), 1e-9);
  o.Table("VPORT", kVportTable, 1);
  o.G(0, "VPORT").G(5, kActiveVport).G(330, kVportTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbViewportTableRecord");
  o.G(2, "*Active").I(70, 0);
  o.R(10, 0.0).R(20, 0.0).R(11, 1.0).R(21, 1.0);
  o.R(12, 0.5 * (e.Left + e.Right)).R(22, 0.5 * (e.Top + e.Bottom));
  o.R(13, 0.0).R(23, 0.0).R(14, 1.0).R(24, 1.0).R(15, 0.0).R(25, 0.0);
  o.R(16, 0.0).R(26, 0.0).R(36, 1.0).R(17, 0.0).R(27, 0.0).R(37, 0.0);
  o.R(40, height).R(41, width / height).R(42, 50.0).R(43, 0.0).R(44, 0.0);
  o.R(50, 0.0).R(51, 0.0);
  o.I(71, 0).I(72, 100).I(73, 1).I(74, 3).I(75, 0).I(76, 0).I(77, 0).I(78, 0);
  o.I(281, 0).I(65, 1);
  o.R(110, 0.0).R(120, 0.0).R(130, 0.0).R(111, 1.0).R(121, 0.0).R(131, 0.0);
  o.R(112, 0.0).R(122, 1.0).R(132, 0.0).I(79, 0).R(146, 0.0);
  o.G(0, "ENDTAB");
}

void LtypeTable(Out& o) {
  o.Table("LTYPE", kLtypeTable, 3);
  const struct {
    const char* handle;
    const char* name;
    const char* description;
  } types[] = {{kByBlock, "ByBlock", ""},
               {kByLayer, "ByLayer", ""},
               {kContinuous, "Continuous", "Solid line"}};
  for (const auto& t : types) {
    o.G(0, "LTYPE").G(5, t.handle).G(330, kLtypeTable);
    o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbLinetypeTableRecord");
    o.G(2, t.name).I(70, 0).G(3, t.description).I(72, 65).I(73, 0).R(40, 0.0);
  }
  o.G(0, "ENDTAB");
}

void LayerEntry(Out& o, const std::string& handle, const std::string& name, int colour) {
  o.G(0, "LAYER").G(5, handle).G(330, kLayerTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbLayerTableRecord");
  o.G(2, name).I(70, 0).I(62, colour).G(6, "Continuous").I(370, -3).G(390, kNormalPlotStyle);
}

void OtherTables(Out& o) {
  o.Table("STYLE", kStyleTable, 1);
  o.G(0, "STYLE").G(5, kStandardStyle).G(330, kStyleTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbTextStyleTableRecord");
  o.G(2, "Standard").I(70, 0).R(40, 0.0).R(41, 1.0).R(50, 0.0).I(71, 0).R(42, 2.5);
  o.G(3, "txt").G(4, "");
  o.G(0, "ENDTAB");

  o.Table("VIEW", kViewTable, 0).G(0, "ENDTAB");
  o.Table("UCS", kUcsTable, 0).G(0, "ENDTAB");

  o.Table("APPID", kAppidTable, 1);
  o.G(0, "APPID").G(5, kAcadAppid).G(330, kAppidTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbRegAppTableRecord");
  o.G(2, "ACAD").I(70, 0);
  o.G(0, "ENDTAB");

  o.Table("DIMSTYLE", kDimstyleTable, 1).G(100, "AcDbDimStyleTable").I(71, 0);
  o.G(0, "DIMSTYLE").G(105, kStandardDimstyle).G(330, kDimstyleTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbDimStyleTableRecord");
  o.G(2, "Standard").I(70, 0);
  o.G(0, "ENDTAB");

  o.Table("BLOCK_RECORD", kBlockRecordTable, 2);
  o.G(0, "BLOCK_RECORD").G(5, kModelSpaceRecord).G(330, kBlockRecordTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbBlockTableRecord");
  o.G(2, "*Model_Space").G(340, kModelLayout);
  o.G(0, "BLOCK_RECORD").G(5, kPaperSpaceRecord).G(330, kBlockRecordTable);
  o.G(100, "AcDbSymbolTableRecord").G(100, "AcDbBlockTableRecord");
  o.G(2, "*Paper_Space").G(340, kPaperLayout);
  o.G(0, "ENDTAB");
}

void Blocks(Out& o) {
  o.G(0, "SECTION").G(2, "BLOCKS");
  o.G(0, "BLOCK").G(5, kModelSpaceBlock).G(330, kModelSpaceRecord);
  o.G(100, "AcDbEntity").G(8, "0").G(100, "AcDbBlockBegin");
  o.G(2, "*Model_Space").I(70, 0).R(10, 0.0).R(20, 0.0).R(30, 0.0);
  o.G(3, "*Model_Space").G(1, "");
  o.G(0, "ENDBLK").G(5, kModelSpaceEnd).G(330, kModelSpaceRecord);
  o.G(100, "AcDbEntity").G(8, "0").G(100, "AcDbBlockEnd");
  o.G(0, "BLOCK").G(5, kPaperSpaceBlock).G(330, kPaperSpaceRecord);
  o.G(100, "AcDbEntity").I(67, 1).G(8, "0").G(100, "AcDbBlockBegin");
  o.G(2, "*Paper_Space").I(70, 0).R(10, 0.0).R(20, 0.0).R(30, 0.0);
  o.G(3, "*Paper_Space").G(1, "");
  o.G(0, "ENDBLK").G(5, kPaperSpaceEnd).G(330, kPaperSpaceRecord);
  o.G(100, "AcDbEntity").I(67, 1).G(8, "0").G(100, "AcDbBlockEnd");
  o.G(0, "ENDSEC");
}

void Layout(Out& o, const char* handle, const char* name, int tab, const char* blockRecord,
            const MapWindow& e) {
  o.G(0, "LAYOUT").G(5, handle).OwnedBy(kLayoutDictionary);
  o.G(100, "AcDbPlotSettings").G(1, "").G(2, "none_device").G(4, "").G(6, "");
  o.R(40, 0.0).R(41, 0.0).R(42, 0.0).R(43, 0.0).R(44, 0.0).R(45, 0.0);
  o.R(46, 0.0).R(47, 0.0).R(48, 0.0).R(49, 0.0).R(140, 0.0).R(141, 0.0);
  o.R(142, 1.0).R(143, 1.0).I(70, 688).I(72, 0).I(73, 0).I(74, 5).G(7, "").I(75, 16);
  o.G(100, "AcDbLayout").G(1, name).I(70, 1).I(71, tab);
  o.R(10, 0.0).R(20, 0.0).R(11, 12.0).R(21, 9.0);
  o.R(12, 0.0).R(22, 0.0).R(32, 0.0);
  o.R(14, e.Left).R(24, e.Bottom).R(34, 0.0).R(15, e.Right).R(25, e.Top).R(35, 0.0);
  o.R(146, 0.0).R(13, 0.0).R(23, 0.0).R(33, 0.0);
  o.R(16, 1.0).R(26, 0.0).R(36, 0.0).R(17, 0.0).R(27, 1.0).R(37, 0.0);
  o.I(76, 0).G(330, blockRecord);
}

void Objects(Out& o, const MapWindow& e) {
  o.G(0, "SECTION").G(2, "OBJECTS");
  o.G(0, "DICTIONARY").G(5, kRootDictionary).G(330, "0").G(100, "AcDbDictionary").I(281, 1);
  o.G(3, "ACAD_GROUP").G(350, kGroupDictionary);
  o.G(3, "ACAD_LAYOUT").G(350, kLayoutDictionary);
  o.G(3, "ACAD_MLINESTYLE").G(350, kMlineStyleDictionary);
  o.G(3, "ACAD_PLOTSETTINGS").G(350, kPlotSettingsDictionary);
  o.G(3, "ACAD_PLOTSTYLENAME").G(350, kPlotStyleDictionary);

  o.G(0, "DICTIONARY").G(5, kGroupDictionary).OwnedBy(kRootDictionary);
  o.G(100, "AcDbDictionary").I(281, 1);

  o.G(0, "DICTIONARY").G(5, kLayoutDictionary).OwnedBy(kRootDictionary);
  o.G(100, "AcDbDictionary").I(281, 1);
  o.G(3, "Layout1").G(350, kPaperLayout).G(3, "Model").G(350, kModelLayout);

  o.G(0, "DICTIONARY").G(5, kMlineStyleDictionary).OwnedBy(kRootDictionary);
  o.G(100, "AcDbDictionary").I(281, 1).G(3, "Standard").G(350, kStandardMlineStyle);

  o.G(0, "DICTIONARY").G(5, kPlotSettingsDictionary).OwnedBy(kRootDictionary);
  o.G(100, "AcDbDictionary").I(281, 1);

  o.G(0, "ACDBDICTIONARYWDFLT").G(5, kPlotStyleDictionary).OwnedBy(kRootDictionary);
  o.G(100, "AcDbDictionary").I(281, 1).G(3, "Normal").G(350, kNormalPlotStyle);
  o.G(100, "AcDbDictionaryWithDefault").G(340, kNormalPlotStyle);

  o.G(0, "ACDBPLACEHOLDER").G(5, kNormalPlotStyle).OwnedBy(kPlotStyleDictionary);

  o.G(0, "MLINESTYLE").G(5, kStandardMlineStyle).OwnedBy(kMlineStyleDictionary);
  o.G(100, "AcDbMlineStyle").G(2, "Standard").I(70, 0).G(3, "").I(62, 256);
  o.R(51, 90.0).R(52, 90.0).I(71, 2);
  o.R(49, 0.5).I(62, 256).G(6, "BYLAYER").R(49, -0.5).I(62, 256).G(6, "BYLAYER");

  Layout(o, kPaperLayout, "Layout1", 1, kPaperSpaceRecord, e);
  Layout(o, kModelLayout, "Model", 0, kModelSpaceRecord, e);
  o.G(0, "ENDSEC");
}

}  // namespace

std::string DxfGroup(int code, const std::string& value) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%3d", code);
  return std::string(buf) + "\r\n" + value + "\r\n";
}

std::string DxfReal(double v) {
  if (!std::isfinite(v)) v = 0.0;
  if (v == 0.0) return "0.0";
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.15g", v);
  std::string s = buf;
  if (s.find_first_of(".eEn") == std::string::npos) s += ".0";
  return s;
}

int DxfLayerColour(const std::string& layer) {
  static const std::map<std::string, int> colours = {
      {"Contours", 5},
      {"Pathlines", 1},
      {"Time Ticmarks", 1},
      {"Vertical Ticmarks Up", 3},
      {"Vertical Ticmarks Down", 4},
      {"Ticmarks", 1},
      {"Capture Zones", 6},
      {"Wells", 1},
      {"Inhomogeneities", 3},
      {"Line-sinks (streams and lakes)", 5},
      {"Line-sinks (drains)", 4},
      {"Line-sinks (galleries)", 6},
      {"Line-sinks (discharge)", 2},
      {"Line-sinks (farfield)", 8},
      {"Line-sinks (near field)", 5},
      {"Horizontal Barriers", 30},
      {"No Flow Strings", 7},
  };
  const auto it = colours.find(layer);
  return it == colours.end() ? 7 : it->second;
}

void DxfDrawing::AddLayer(const std::string& layer) {
  if (std::find(layers_.begin(), layers_.end(), layer) == layers_.end()) layers_.push_back(layer);
}

void DxfDrawing::AddPolyline(const std::string& layer, const std::vector<MapPoint>& points,
                             bool closed, double elevation) {
  AddLayer(layer);
  Entity e;
  e.layer = layer;
  e.points = points;
  e.closed = closed;
  e.elevation = elevation;
  entities_.push_back(std::move(e));
}

void DxfDrawing::AddCircle(const std::string& layer, double x, double y, double radius) {
  AddLayer(layer);
  Entity e;
  e.circle = true;
  e.layer = layer;
  e.points = {{x, y}};
  e.radius = radius;
  entities_.push_back(std::move(e));
}

std::string DxfDrawing::Text(const MapWindow& extents) const {
  // Layer "0" always stands in the table; the others follow in their order of use.
  std::vector<std::string> layers;
  for (const std::string& l : layers_)
    if (l != "0") layers.push_back(l);
  const unsigned handseed =
      kFirstFreeHandle + static_cast<unsigned>(layers.size() + entities_.size());

  Out o;
  Header(o, extents, handseed);
  o.G(0, "SECTION").G(2, "TABLES");
  VportTable(o, extents);
  LtypeTable(o);
  o.Table("LAYER", kLayerTable, static_cast<int>(layers.size()) + 1);
  LayerEntry(o, kLayerZero, "0", 7);
  unsigned handle = kFirstFreeHandle;
  for (const std::string& l : layers) LayerEntry(o, Hex(handle++), l, DxfLayerColour(l));
  o.G(0, "ENDTAB");
  OtherTables(o);
  o.G(0, "ENDSEC");
  Blocks(o);

  o.G(0, "SECTION").G(2, "ENTITIES");
  for (const Entity& e : entities_) {
    if (e.circle) {
      o.G(0, "CIRCLE").G(5, Hex(handle++)).G(330, kModelSpaceRecord);
      o.G(100, "AcDbEntity").G(8, e.layer).G(6, "Continuous");
      o.G(100, "AcDbCircle").R(10, e.points[0].x).R(20, e.points[0].y).R(30, 0.0);
      o.R(40, e.radius);
      continue;
    }
    o.G(0, "LWPOLYLINE").G(5, Hex(handle++)).G(330, kModelSpaceRecord);
    o.G(100, "AcDbEntity").G(8, e.layer).G(6, "Continuous");
    o.G(100, "AcDbPolyline").I(90, static_cast<long long>(e.points.size()));
    o.I(70, e.closed ? 1 : 0).R(43, 0.0);
    if (e.elevation != 0.0) o.R(38, e.elevation);
    for (const MapPoint& p : e.points) o.R(10, p.x).R(20, p.y);
  }
  o.G(0, "ENDSEC");
  Objects(o, extents);
  o.G(0, "EOF");
  return std::move(o.text());
}

void DxfDrawing::Write(const std::filesystem::path& file, const MapWindow& extents) const {
  const std::string text = Text(extents);
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("Cannot create the DXF file " + file.string(), error_number::kFileNotFound);
  out << text;
  out.close();
  if (!out) throw Error("Cannot write the DXF file " + file.string());
}

}  // namespace tarno::exchange
