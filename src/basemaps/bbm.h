// BBM vector maps: one open map file, its header, its index of records and its
// drawing on the graphics layer.
//
// Connect reads the header and builds an index of the records (where each record's
// variable part begins, its counts and its box) and closes the file again; no
// geometry stays in memory. A draw opens the file, reads only the records whose box
// is inside the window and hands their coordinates, which are hundredths when the
// file's multiplier is 100, straight to the layer's hundredths calls.
//
// The file layout is in bbm_format.h. The drawing rules by data type (the DLG
// attribute styling of -100000, the simple codes of -100001, the coloured lines of
// -100004, the unattributed records of -100005 and the command stream of -100006)
// are in bbm.cpp next to the code that applies them.
//
// Failures: a file that cannot be opened leaves the map not connected, silently; a
// wrong signature or version shows the "BBM file error!" box (when the map has a
// user interface) and throws BbmError; a truncated file, counts that overrun it, a
// boundary that names a missing line, and the DLG class 19 at the closest level
// throw BbmError naming the file. A failure in the command stream is told in a box
// and ends the draw of the map.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "core/error.h"
#include "display/canvas.h"

namespace tarno {

class UserInterface;
class VGraphGDI;

// A BBM file that cannot be read as one; the description names the file.
class BbmError : public Error {
 public:
  explicit BbmError(const std::string& description, int number = 0) : Error(description, number) {}
};

namespace bbm_text {
inline constexpr const char* kFileErrorTitle = "BBM file error!";
inline constexpr const char* kIllegalHeader = "Illegal BBM file header found in file ";
inline constexpr const char* kIllegalVersion = "Illegal BBM version found in file ";
inline constexpr const char* kNotConnectedTitle = "Not Connected";
inline constexpr const char* kNotConnected = "Cannot access map -- not connected";
inline constexpr const char* kInfoTitle = "BBM File Header";
inline constexpr const char* kCommandError = "Error encountered in OpenDWG BBM file";
inline constexpr const char* kFileFilter = "Binary Base Map files|*.bbm";
inline constexpr const char* kLabelFont = "Verdana Bold";
}  // namespace bbm_text

// One record of the index. Position is the file offset of the record's first
// variable field (its attribute pairs). An area has no box: its four slots are 0.
struct BBMRecordIndex {
  std::int32_t Id = 0;
  std::int64_t Position = 0;
  std::int32_t AttrValues = 0;
  std::int32_t AttrPairs = 0;
  std::int32_t Boundaries = 0;
  std::int32_t Vertices = 0;
  std::int32_t Xmin = 0, Ymin = 0, Xmax = 0, Ymax = 0;
  // A point's own coordinates (part of its fixed fields).
  std::int32_t X = 0, Y = 0;
};

// The header of a BBM file as read.
struct BbmHeader {
  std::int32_t Major = 0, Minor = 0, Patch = 0;
  std::string Title, Source, Description;  // trailing blanks removed
  std::int32_t DataType = 0;
  std::int32_t Projection = 0;
  std::int32_t Multiplier = 0;
  // Record form: the counts; command form: the logical pixels.
  std::int32_t PointCount = 0, LineCount = 0, AreaCount = 0;
  std::int32_t LogicalPixelsX = 0, LogicalPixelsY = 0;
  std::int32_t X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
  std::int64_t BodyPosition = 0;
  bool IsCommandForm() const;
  // The version as shown: major "." minor "." patch.
  std::string VersionText() const;
};

// What DrawLine returns besides drawing: a label to place (empty: none) at a world
// point with an angle in degrees.
struct BbmLineLabel {
  std::string text;
  double x = 0.0, y = 0.0, angle = 0.0;
};

// Switches of the drawing that come from outside the map.
struct BbmDrawOptions {
  // The "View Hypsography Labels" switch: elevation labels of DLG hypsography.
  bool hypsographyLabels = false;
  // The project's ModelCompUnits is "Meters": elevations in feet are converted.
  bool metres = false;
};

// An attribute group: the records that carry one attribute pair (major, minor),
// counted by kind.
struct BbmGroup {
  std::int32_t major = 0;
  std::int32_t minor = 0;
  int points = 0;
  int lines = 0;
  int areas = 0;
  friend bool operator==(const BbmGroup&, const BbmGroup&) = default;
};

class BBMap {
 public:
  // Boxes go to `ui`; without one they are not shown (the errors are still thrown).
  explicit BBMap(UserInterface* ui = nullptr) : ui_(ui) {}
  ~BBMap();
  BBMap(const BBMap&) = delete;
  BBMap& operator=(const BBMap&) = delete;
  void SetUserInterface(UserInterface* ui) { ui_ = ui; }

  // Connect (let): opens, checks and indexes the file and closes it again. A file
  // that cannot be opened leaves the map not connected without a word.
  void Connect(const std::string& path);
  // Connect (get): the file name; when not connected the "Not Connected" box and "".
  std::string ConnectName() const;
  bool Connected() const { return connected_; }

  Colour color() const { return color_; }
  void color(Colour value) { color_ = value; }
  const std::string& Fname() const { return fileName_; }
  // The bounding box in world units: X1, X2, Y2, Y1 divided by the multiplier.
  double Left() const;
  double Right() const;
  double Top() const;
  double Bottom() const;

  const BbmHeader& Header() const { return header_; }
  const std::vector<BBMRecordIndex>& PointIndex() const { return points_; }
  const std::vector<BBMRecordIndex>& LineIndex() const { return lines_; }
  const std::vector<BBMRecordIndex>& AreaIndex() const { return areas_; }

  // ShowInfo's lines, and the box "BBM File Header" that shows them.
  std::vector<std::string> InfoLines() const;
  void ShowInfo() const;

  void SetDrawOptions(const BbmDrawOptions& options) { options_ = options; }
  const BbmDrawOptions& DrawOptions() const { return options_; }
  // True once a draw met DLG hypsography elevations: "View Hypsography Labels" is
  // then to be enabled.
  bool HypsographyFound() const { return hypsographyFound_; }

  // Draw: opens the file, draws the command stream or the areas, lines and points
  // (areas under lines under points), closes.
  void Draw(VGraphGDI& g, bool drawAreas, bool drawLines, bool drawPoints);
  void DrawAllAreas(VGraphGDI& g);
  void DrawAllLines(VGraphGDI& g);
  void DrawAllPoints(VGraphGDI& g);
  // One record by its 1-based number in its index.
  void DrawArea(VGraphGDI& g, int record);
  BbmLineLabel DrawLine(VGraphGDI& g, int record);
  void DrawPoint(VGraphGDI& g, int record);
  // Plays the drawing-command stream; a failure is told in a box and ends it.
  void DrawCommands(VGraphGDI& g);

  // The attribute groups of the map (record form), ordered by major and minor.
  std::vector<BbmGroup> Groups();
  // Draws every visible record carrying the pair (major, minor) in `colour`: lines
  // two pixels wide, points as crosses, areas outlined.
  void DrawGroup(VGraphGDI& g, std::int32_t major, std::int32_t minor, Colour colour);

 private:
  class File;
  struct Pair {
    std::int32_t major = 0, minor = 0;
  };
  void ReadHeader(File& f);
  void ScanRecords(File& f);
  void SetDefaultColour();
  [[noreturn]] void Fail(const std::string& what) const;
  // Opens the file for a draw unless it is open already; true when this call opened it.
  bool OpenForDrawing();
  void CloseAfterDrawing(bool opened);
  File& Open() const;
  void ReadPairs(const BBMRecordIndex& r, std::vector<Pair>& pairs);
  // The vertices of a line (X, Y of each, in hundredths).
  void ReadLineVertices(const BBMRecordIndex& r, std::vector<std::int32_t>& xs,
                        std::vector<std::int32_t>& ys);
  void DrawCommandStream(VGraphGDI& g);

  UserInterface* ui_ = nullptr;
  bool connected_ = false;
  std::string fileName_;
  Colour color_ = 0;
  BbmHeader header_;
  std::vector<BBMRecordIndex> points_, lines_, areas_;
  BbmDrawOptions options_;
  bool hypsographyFound_ = false;
  File* file_ = nullptr;  // open while drawing
  // Buffers kept between records to spare allocations.
  std::vector<Pair> pairs_;
  std::vector<std::int32_t> xs_, ys_, dxs_, dys_;
  std::vector<unsigned char> bytes_;
};

// The projection zone of a BBM file, read at its fixed offset without checking the
// rest of the header. Throws BbmError naming the file when it cannot be read.
std::int32_t GetBBMProjection(const std::string& path);

// Drops the vertices of a line that lie within `step` (hundredths) in both X and Y
// of the last vertex kept; the first and the last vertex always stay. With a step of
// one pixel the drawn line differs from the full one by less than a pixel.
void ThinPolyline(const std::int32_t* xs, const std::int32_t* ys, int count, double step,
                  std::vector<std::int32_t>& outX, std::vector<std::int32_t>& outY);

}  // namespace tarno
