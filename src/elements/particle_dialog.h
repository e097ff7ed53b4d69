// The properties of a particle, the starting point of a pathline: the direction of
// tracing and the starting elevation (the top of the saturated thickness, or an
// elevation typed in). With Multiple set the dialog also asks for the number of
// particles of a grid, and it serves the edit of many particles at once.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "elements/element_dialog.h"
#include "elements/entry_check.h"

namespace tarno {

// What a particle dialog last took, offered again the next time a particle is added.
// The first use has the defaults of a new Particles row: forward, at the top of the
// saturated thickness, elevation 0.
struct ParticleSettings {
  int forward = 1;
  int satdThick = 1;
  double elevation = 0.0;
  bool operator==(const ParticleSettings&) const = default;
};
// The settings of the last use in this session (a passing OK records them).
ParticleSettings& ParticleLastUse();

// The starting points of a particle grid over the rectangle of two corners (in any
// order) for a wish of n particles: the spacing is the square root of W * H / n,
// and the counts along X and Y are W and H over the spacing, truncated. The points
// sit at the centres of the grid's cells, row by row from the lower left corner
// (X fastest). n at or below 0, or a rectangle without area, gives no point.
struct GridPoint {
  double x = 0.0;
  double y = 0.0;
  bool operator==(const GridPoint&) const = default;
};
std::vector<GridPoint> ParticleGrid(double x1, double y1, double x2, double y2, std::int64_t n);

class ParticleProperties : public ElementDialog {
 public:
  static constexpr const char* kName = "ParticleProperties";
  static constexpr const char* kTitle = "Particle Properties             (F1 for Help)";
  static constexpr std::array<const char*, 2> kDirectionOptions = {"Backward in time",
                                                                   "Forward in time"};
  static constexpr const char* kSatdThickCaption = "Start at top of saturated thickness";
  static constexpr const char* kSatdThickTip =
      "On-start at aquifer top  Off-start at entered elevation";
  static constexpr const char* kElevationCaption = "Starting elevation";
  static constexpr const char* kNumberCaption = "Number of Particles";

  enum class Field { None, Direction, Elevation, Number };

  std::string DialogName() const override { return kName; }

  // A new particle: the settings of the last use and "0" particles.
  void LoadLastUse(Database& db);
  void LoadElement(Database& db, const Element& e) override;
  // "Tracing Direction" when no direction is chosen; "Invalid Entry" for a bad
  // elevation (only while the elevation is used) or, with Multiple, a bad number of
  // particles. A passing OK records the settings as the last use.
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  bool FormChanged() const override;

  // The properties.
  int Forward() const { return chkDirection == 1 ? 1 : 0; }
  int SatdThick() const { return chkSatdThick ? 1 : 0; }
  double Elevation() const { return ReadNumber(tbElevation, shownElevation_); }
  std::int64_t ParticleNum() const;
  ParticleSettings Settings() const { return {Forward(), SatdThick(), Elevation()}; }

  // The enabling rules: the elevation is typed only when the particle does not start
  // at the top of the saturated thickness; the number shows only with Multiple.
  bool ElevationEnabled() const { return !chkSatdThick; }
  bool NumberVisible() const { return Multiple; }

  // The fields. chkDirection: 0 backward, 1 forward, -1 none chosen (a stored value
  // that is neither).
  int chkDirection = 1;
  bool chkSatdThick = true;
  std::string tbElevation = "0";
  std::string NumOfParticles = "0";
  bool Multiple = false;
  std::string lblElevationUnit = "meters";

  Field failedField = Field::None;

 private:
  void Fill(Database& db, const ParticleSettings& s);

  ShownNumber shownElevation_;
  std::int64_t key_ = 0;
  Element loaded_;
};

}  // namespace tarno
