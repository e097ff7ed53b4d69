#include "engine/extract.h"

#include "engine/area.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace tarno::engine {

namespace layout = tarno::solver_files;

namespace {

constexpr double kNotFinite = -9999.0;

// Commas separate the fields of a record, so a label may not carry one.
std::string cleanLabel(const std::string& label) {
  std::string s = label;
  for (char& c : s)
    if (c == layout::kFieldSeparator || c == '\r' || c == '\n') c = '_';
  return s;
}

struct Finite {
  int* count;
  double operator()(double v) const {
    if (std::isfinite(v)) return v;
    if (count) ++*count;
    return kNotFinite;
  }
};

void appendFormatted(std::string& s, const char* fmt, double v) {
  char buf[64];
  int n = std::snprintf(buf, sizeof buf, fmt, v);
  if (n > 0) s.append(buf, static_cast<size_t>(std::min(n, static_cast<int>(sizeof buf) - 1)));
}

}  // namespace

std::string formatPointRecord(const PointValues& v, const std::string& label) {
  namespace pt = layout::point;
  double f[pt::kNumbers] = {};
  f[pt::kX - 1] = v.x;
  f[pt::kY - 1] = v.y;
  f[pt::kZ - 1] = v.z;
  f[pt::kPotential - 1] = v.potential;
  f[pt::kQx - 1] = v.qx;
  f[pt::kQy - 1] = v.qy;
  f[pt::kVx - 1] = v.vx;
  f[pt::kVy - 1] = v.vy;
  f[pt::kHead - 1] = v.head;
  f[pt::kVz - 1] = v.vz;
  f[pt::kPorosity - 1] = v.porosity;
  f[pt::kConductivity - 1] = v.conductivity;
  f[pt::kBase - 1] = v.base;
  f[pt::kRecharge - 1] = v.recharge;
  std::string s(1, layout::kPointMark);
  appendFormatted(s, pt::kFirstFormat, f[0]);
  for (int i = 1; i < pt::kNumbers; ++i) {
    s += layout::kFieldSeparator;
    appendFormatted(s, pt::kFormat, f[i]);
  }
  s += layout::kFieldSeparator;
  s += cleanLabel(label);
  return s;
}

namespace {
// A gage or lake stage record: the word right-aligned in its width, then X, Y and the value.
std::string formatWordRecord(const char* wordFormat, const char* word, double x, double y, double value,
                             const std::string& label) {
  std::string s(1, layout::kPointMark);
  char buf[32];
  std::snprintf(buf, sizeof buf, wordFormat, word);
  s += buf;
  for (double v : {x, y, value}) {
    s += layout::kFieldSeparator;
    appendFormatted(s, layout::word_record::kNumberFormat, v);
  }
  s += layout::kFieldSeparator;
  s += cleanLabel(label);
  return s;
}
}  // namespace

std::string formatGageRecord(double x, double y, double flow, const std::string& label) {
  return formatWordRecord(layout::word_record::kGageWordFormat, layout::word_record::kGageWord, x, y, flow, label);
}

std::string formatLakeStageRecord(double x, double y, double head, const std::string& label) {
  return formatWordRecord(layout::word_record::kLakeStageWordFormat, layout::word_record::kLakeStageWord, x, y, head,
                          label);
}

std::string formatInterfaceRecord(double x, double y, double elevation) {
  return formatWordRecord(layout::word_record::kInterfaceWordFormat, layout::word_record::kInterfaceWord, x, y,
                          elevation, "");
}

std::string formatCellLeakageRecord(double x, double y, double rate) {
  return formatWordRecord(layout::word_record::kCellLeakageWordFormat,
                          layout::word_record::kCellLeakageWord, x, y, rate, "");
}

double SolutionSource::leakageRate(double x, double y) const {
  // Cells do not overlap; a point on a shared edge belongs to the cell on its upper right.
  for (const LeakageCell& c : s_.model().leakage)
    if (detail::insideLeakageCell(c, x, y)) return c.rate;
  return 0.0;
}

std::string formatSectionRecord(const std::vector<double>& values, const std::string& label) {
  std::string s(1, layout::kRecordMark);
  for (double v : values) {
    appendFormatted(s, layout::kSectionNumberFormat, v);
    s += layout::kFieldSeparator;
    s += ' ';
  }
  s += cleanLabel(label);
  return s;
}

std::string formatLabelFirstRecord(const std::string& label, const std::vector<double>& values) {
  std::string s(1, layout::kRecordMark);
  s += cleanLabel(label);
  for (double v : values) {
    s += layout::kFieldSeparator;
    s += ' ';
    appendFormatted(s, layout::kSectionNumberFormat, v);
  }
  return s;
}

void writeExtract(std::ostream& out, const ExtractInput& block, const ExtractSource& source, int* nonFinite) {
  Finite fin{nonFinite};
  out << kHeadDataPoints << '\n';
  // Interface records stand among the point records by their line in the command file.
  size_t nextInterface = 0;
  auto interfaceRecordsBefore = [&](int line) {
    for (; nextInterface < block.interfacePoints.size() && block.interfacePoints[nextInterface].line < line;
         ++nextInterface) {
      const InterfacePointInput& q = block.interfacePoints[nextInterface];
      if (q.cellLeakage) {
        out << formatCellLeakageRecord(q.x, q.y, fin(source.leakageRate(q.x, q.y))) << '\n';
        continue;
      }
      const std::optional<double> z = source.interfaceElevation(q.x, q.y);
      out << formatInterfaceRecord(q.x, q.y, z ? fin(*z) : kNotFinite) << '\n';
    }
  };
  long pointRecords = 0;
  for (const ExtractPoint& p : block.points) pointRecords += p.kind == ExtractPoint::Kind::Point;
  source.expectPoints(pointRecords);
  for (const ExtractPoint& p : block.points) {
    interfaceRecordsBefore(p.line);
    switch (p.kind) {
      case ExtractPoint::Kind::Point: {
        PointValues v = source.point(p.x, p.y, p.z);
        v.x = p.x;
        v.y = p.y;
        for (double* d : {&v.z, &v.potential, &v.qx, &v.qy, &v.vx, &v.vy, &v.head, &v.vz, &v.porosity,
                          &v.conductivity, &v.base, &v.recharge})
          *d = fin(*d);
        out << formatPointRecord(v, p.label) << '\n';
        break;
      }
      case ExtractPoint::Kind::Gage:
        out << formatGageRecord(p.x, p.y, fin(source.gageFlow(p.x, p.y)), p.label) << '\n';
        break;
      case ExtractPoint::Kind::LakeStage:
        out << formatLakeStageRecord(p.x, p.y, fin(source.lakeStage(p.x, p.y)), p.label) << '\n';
        break;
    }
  }
  interfaceRecordsBefore(std::numeric_limits<int>::max());

  bool needWells = false, needSegments = false;
  for (ExtractRequest r : block.requests) {
    needWells = needWells || r == ExtractRequest::WellDischarge || r == ExtractRequest::WellHead;
    needSegments = needSegments || r == ExtractRequest::LineSinkDischarge || r == ExtractRequest::LineSinkHead;
  }
  std::vector<WellResult> wells;
  std::vector<SegmentResult> segments;
  if (needWells) wells = source.wells();
  if (needSegments) segments = source.segments();

  // The records of the three kinds of wells are alike: X, Y, radius, discharge, then the
  // head, or the specified head and the head error.
  auto wellRecords = [&](const auto& list, bool headSpecified) {
    for (const WellResult& w : list) {
      if (w.headSpecified != headSpecified) continue;
      if (headSpecified)
        out << formatSectionRecord({fin(w.x), fin(w.y), fin(w.radius), fin(w.discharge), fin(w.specifiedHead),
                                    fin(w.headError)},
                                   w.label)
            << '\n';
      else
        out << formatSectionRecord({fin(w.x), fin(w.y), fin(w.radius), fin(w.discharge), fin(w.head)}, w.label)
            << '\n';
    }
  };
  auto wellSection = [&](bool headSpecified) {
    out << (headSpecified ? kHeadHeadWells : kHeadDischargeWells) << '\n';
    wellRecords(wells, headSpecified);
  };
  auto headSegment = [&](const SegmentResult& s, bool routedFields) {
    std::vector<double> v = {fin(s.x1), fin(s.y1), fin(s.x2), fin(s.y2), fin(s.specifiedHead), fin(s.calculatedHead),
                             fin(s.discharge), fin(s.width), fin(s.resistance), fin(s.depth)};
    if (routedFields) {
      v.push_back(fin(s.baseFlow));
      v.push_back(fin(s.overlandFlow));
    }
    v.push_back(fin(s.error));
    return formatSectionRecord(v, s.label);
  };

  for (ExtractRequest r : block.requests) {
    switch (r) {
      case ExtractRequest::WellDischarge: wellSection(false); break;
      case ExtractRequest::WellHead: wellSection(true); break;
      // Partially penetrating wells: the head includes the loss of the partial screen.
      case ExtractRequest::PartialWellDischarge:
        out << kHeadDischargePartialWells << '\n';
        wellRecords(source.partialWells(), false);
        break;
      case ExtractRequest::PartialWellHead:
        out << kHeadHeadPartialWells << '\n';
        wellRecords(source.partialWells(), true);
        break;
      // Transient wells: one record per well (schedule), at the time of evaluation.
      case ExtractRequest::TheisWell:
        out << kHeadTheisWells << '\n';
        wellRecords(source.theisWells(), false);
        break;
      case ExtractRequest::LineSinkDischarge:
        out << kHeadDischargeLineSinks << '\n';
        for (const SegmentResult& s : segments)
          if (s.kind == LineSinkKind::Discharge)
            out << formatSectionRecord({fin(s.x1), fin(s.y1), fin(s.x2), fin(s.y2), fin(s.discharge)}, s.label) << '\n';
        break;
      case ExtractRequest::LineSinkHead: {
        out << kHeadHeadLineSinks << '\n';
        for (const SegmentResult& s : segments)
          if (s.kind == LineSinkKind::Head || s.kind == LineSinkKind::Stream) out << headSegment(s, true) << '\n';
        out << kHeadDrains << '\n';
        for (const SegmentResult& s : segments)
          if (s.kind == LineSinkKind::Drain) out << headSegment(s, false) << '\n';
        out << kHeadGalleries << '\n';
        for (const SegmentResult& s : segments)
          if (s.kind == LineSinkKind::Gallery) out << headSegment(s, false) << '\n';
        bool anyLink = false;
        for (const SegmentResult& s : segments)
          if (s.kind == LineSinkKind::Stream) anyLink = true;
        if (anyLink) {
          out << kHeadStreamLinkages << '\n';
          for (const SegmentResult& s : segments)
            if (s.kind == LineSinkKind::Stream && !s.downstreamLabel.empty())
              out << layout::kRecordMark << cleanLabel(s.label) << layout::kFieldSeparator << ' '
                  << cleanLabel(s.downstreamLabel) << '\n';
        }
        break;
      }
      case ExtractRequest::Inhomogeneity: {
        out << kHeadInhomogeneities << '\n';
        for (const InhomogeneityResult& r : source.inhomogeneities()) {
          out << formatLabelFirstRecord(r.label, {fin(r.conductivity), fin(r.base), fin(r.extraction), fin(r.porosity),
                                                  fin(r.area), fin(r.averageJump)})
              << '\n';
          for (const InhomogeneityNode& n : r.nodes)
            out << formatLabelFirstRecord(n.label, {fin(n.x1), fin(n.y1), fin(n.xc), fin(n.yc), fin(n.jumpNode),
                                                    fin(n.jumpParabolic), fin(n.extractionNode), fin(n.extractionNodeImag),
                                                    fin(n.extractionCentre), fin(n.transmissivityFactor), fin(n.errorNode),
                                                    fin(n.errorCentre), fin(n.flowErrorCentre)})
                << '\n';
        }
        out << kHeadWalls << '\n';
        for (const WallResult& r : source.walls()) {
          out << formatLabelFirstRecord(r.label, {fin(r.conductivity), fin(r.thickness), fin(r.porosity), fin(r.bottom)})
              << '\n';
          for (const WallNode& n : r.nodes)
            out << formatLabelFirstRecord(n.label, {fin(n.x1), fin(n.y1), fin(n.xc), fin(n.yc), fin(n.jumpNode),
                                                    fin(n.jumpParabolic), fin(n.flowErrorCentre), fin(n.flowErrorNode),
                                                    fin(n.headDifferenceCentre)})
                << '\n';
        }
        // The lakes' balances, in the order of the message log's.
        const std::vector<LakeResult> lakes = source.lakes();
        if (!lakes.empty()) {
          out << kHeadLakeBalances << '\n';
          for (const LakeResult& l : lakes) {
            out << layout::kRecordMark << cleanLabel(l.label) << layout::kFieldSeparator << ' '
                << cleanLabel(l.firstLabel) << layout::kFieldSeparator << ' '
                << cleanLabel(l.lastLabel);
            for (double v : {l.polygonArea, l.surfaceArea, l.volume, l.dry ? kDryHead : l.stage,
                             l.aquiferHead, l.precipitation, l.groundwaterIn, l.overlandIn,
                             l.streamIn, l.totalIn, l.evaporation, l.groundwaterOut, l.overlandOut,
                             l.streamOut, l.totalOut, l.error, l.errorPercent}) {
              std::string num;
              appendFormatted(num, layout::kSectionNumberFormat, fin(v));
              out << layout::kFieldSeparator << ' ' << num;
            }
            out << '\n';
          }
        }
        break;
      }
      case ExtractRequest::Leakage:
        // "leakage <total> [<integrated> <relative difference>]" of the last leakage check.
        if (auto v = source.leakageCheck()) {
          out << "leakage";
          for (double x : *v) {
            std::string num;
            appendFormatted(num, layout::kSectionNumberFormat, fin(x));
            out << ' ' << num;
          }
          out << '\n';
        } else {
          out << layout::kCommentMark << " leakage: no leakage check before this extract\n";
        }
        break;
    }
  }

  if (!block.fluxLines.empty()) {
    out << kHeadFluxLines << '\n';
    for (const FluxLineInput& f : block.fluxLines) {
      std::vector<std::pair<double, double>> poly;
      poly.reserve(f.points.size());
      for (const auto& p : f.points) poly.emplace_back(p[0], p[1]);
      double q = poly.size() >= 2 ? source.flux(poly) : 0.0;
      out << layout::kRecordMark << cleanLabel(f.label) << layout::kFieldSeparator << ' ';
      std::string num;
      appendFormatted(num, layout::kSectionNumberFormat, fin(q));
      out << num << '\n';
    }
  }
}

}  // namespace tarno::engine
