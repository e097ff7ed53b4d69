#include "elements/observation.h"

#include "elements/kind.h"
#include "elements/solver_label.h"

namespace tarno {

namespace {

struct TestPointPass {
  const char* type;
  const char* lead;
};

// The extract block's passes over the test points, one per type.
const TestPointPass kPasses[3] = {
    {"Piezometer", "  "}, {"Gage", "  gage "}, {"Lake Stage", "  lake_stage "}};

}  // namespace

std::string TestPointSolverLabel(const std::string& type, std::int64_t vid) {
  if (type == "Gage") return SolverLabel(kGageSolverPrefix, vid);
  if (type == "Lake Stage") return SolverLabel(kLakeStageSolverPrefix, vid);
  return SolverLabel(Info(ElementKind::TestPoint).solverPrefix, vid);
}

std::string FluxLineSolverLabel(std::int64_t pid) {
  return SolverLabel(Info(ElementKind::FluxLine).solverPrefix, pid);
}

void WriteTestPointExtracts(std::ostream& out, const std::vector<Element>& testPoints,
                            const ModelFrame& frame) {
  for (const TestPointPass& p : kPasses) {
    for (const Element& tp : testPoints) {
      const std::string type = tp.row.Text("Type");
      if (type != p.type) continue;
      PutLine(out, std::string(p.lead) + Masked(WToM_X(frame, tp.X()), "######0.00 ") +
                       Masked(WToM_Y(frame, tp.Y()), "######0.00 ") +
                       TestPointSolverLabel(type, tp.key));
    }
  }
}

void WriteFluxLineExtracts(std::ostream& out, const std::vector<Element>& fluxLines,
                           const ModelFrame& frame) {
  for (const Element& fl : fluxLines) {
    PutLine(out, std::string(" flux ") + FluxLineSolverLabel(fl.key));
    for (const Vertex& v : fl.vertices)
      PutLine(out, std::string("  ") + Masked(WToM_X(frame, v.X), "######0.00 ") +
                       Masked(WToM_Y(frame, v.Y), "######0.00 "));
    PutLine(out, " quit");
  }
}

void WriteParticleTraces(std::ostream& out, const std::vector<Element>& particles,
                         const ModelFrame& frame, double saturatedTop) {
  bool any = false;
  for (const Element& p : particles) {
    if (!any) PutLine(out, " points");
    any = true;
    // Only the number 1 means "a fraction of the saturated thickness"; a boolean
    // true stored as -1 uses the elevation.
    const double z = p.row.Integer("SatdThick") == 1 ? saturatedTop : p.row.Number("Elevation");
    const double direction = p.row.Integer("Forward") != 0 ? 1.0 : -1.0;
    PutLine(out, std::string(" ") + Masked(WToM_X(frame, p.X()), "0.0000000E+00 ") +
                     Masked(WToM_Y(frame, p.Y()), "0.0000000E+00 ") + Masked(z, "0.0000000E+00 ") +
                     Masked(direction, "#0.0"));
  }
  if (any) PutLine(out, " quit");
}

void PrepareTestPointResultRows(Database& db, const std::vector<Element>& testPoints) {
  db.ExecuteRaw("delete from TPResults");
  Statement st = db.PrepareRaw(
      "insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, X, Y, ObsStreamFlow, "
      "ModelFlow, Type) values (?, ?, ?, 0.0, 0.0, ?, ?, ?, 0.0, ?)");
  for (const Element& tp : testPoints) {
    st.Reset();
    st.Bind(1, tp.row.Get("Label"))
        .Bind(2, tp.key)
        .Bind(3, tp.row.Get("ObsHead"))
        .Bind(4, tp.X())
        .Bind(5, tp.Y())
        .Bind(6, tp.row.Get("ObsStreamFlow"))
        .Bind(7, tp.row.Get("Type"));
    st.Run();
  }
}

}  // namespace tarno
