#include "elements/particle_dialog.h"

#include <algorithm>
#include <cmath>

#include "core/text.h"
#include "elements/element_store.h"

namespace tarno {

ParticleSettings& ParticleLastUse() {
  static ParticleSettings last;
  return last;
}

std::vector<GridPoint> ParticleGrid(double x1, double y1, double x2, double y2, std::int64_t n) {
  std::vector<GridPoint> points;
  if (n <= 0) return points;
  const double left = std::min(x1, x2);
  const double bottom = std::min(y1, y2);
  const double w = std::fabs(x2 - x1);
  const double h = std::fabs(y2 - y1);
  if (!(w > 0.0) || !(h > 0.0)) return points;
  const double spacing = std::sqrt(w * h / static_cast<double>(n));
  // Truncated counts; the small allowance keeps a quotient that is whole in decimal
  // (0.3 / 0.1) from losing a row to the binary representation.
  const auto count = [spacing](double length) {
    return static_cast<std::int64_t>(std::floor(length / spacing * (1.0 + 1e-12)));
  };
  const std::int64_t nx = count(w);
  const std::int64_t ny = count(h);
  points.reserve(static_cast<std::size_t>(nx * ny));
  for (std::int64_t j = 0; j < ny; ++j)
    for (std::int64_t i = 0; i < nx; ++i)
      points.push_back({left + (static_cast<double>(i) + 0.5) * spacing,
                        bottom + (static_cast<double>(j) + 0.5) * spacing});
  return points;
}

void ParticleProperties::Fill(Database& db, const ParticleSettings& s) {
  lblElevationUnit = LengthUnitWord(LoadAquiferFrame(db).computeMeters);
  chkDirection = s.forward == 1 ? 1 : (s.forward == 0 ? 0 : -1);
  chkSatdThick = s.satdThick != 0;
  shownElevation_ = ShowNumber(s.elevation);
  tbElevation = shownElevation_.text;
  NumOfParticles.assign(1, '0');  // (a literal assignment trips a false -Wrestrict of GCC 12)
  failedField = Field::None;
  Result = 2;
}

void ParticleProperties::LoadLastUse(Database& db) {
  Fill(db, ParticleLastUse());
  key_ = 0;
  loaded_ = NewElement(ElementKind::Particle);
}

void ParticleProperties::LoadElement(Database& db, const Element& e) {
  Fill(db, {static_cast<int>(e.row.Integer("Forward")),
            static_cast<int>(e.row.Integer("SatdThick")), e.row.Number("Elevation")});
  key_ = e.key;
  loaded_ = e;
}

std::int64_t ParticleProperties::ParticleNum() const {
  if (!IsNumberEntry(NumOfParticles)) return 0;
  return static_cast<std::int64_t>(Val(NumOfParticles));
}

bool ParticleProperties::OK(Database&, UserInterface& ui) {
  failedField = Field::None;
  const auto fail = [&](Field field, const std::string& title,
                        const std::vector<std::string>& lines) {
    failedField = field;
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    return false;
  };
  if (chkDirection != 0 && chkDirection != 1)
    return fail(Field::Direction, "Tracing Direction", {"Please choose a tracing direction."});
  if (ElevationEnabled() && !IsNumberEntry(tbElevation))
    return fail(Field::Elevation, "Invalid Entry", {"Invalid data value.  Please re-enter"});
  // The number of a grid is a count: a whole number of the range of a Long.
  if (Multiple && !IsWholeEntry(NumOfParticles, -2147483648.0, 2147483647.0))
    return fail(Field::Number, "Invalid Entry", {"Invalid data value.  Please re-enter"});
  ParticleLastUse() = Settings();
  Result = 1;
  return true;
}

void ParticleProperties::StoreElement(Element& e) const {
  SetInteger(e.row, "Forward", Forward());
  SetInteger(e.row, "SatdThick", SatdThick());
  // With the start at the top of the saturated thickness the elevation is not used;
  // a text that does not read keeps the stored elevation.
  if (IsNumberEntry(tbElevation)) SetNumber(e.row, "Elevation", Elevation());
}

bool ParticleProperties::FormChanged() const {
  if (key_ == 0) return true;  // new particles change the pathlines
  Element after = loaded_;
  StoreElement(after);
  return !(after == loaded_);
}

}  // namespace tarno
