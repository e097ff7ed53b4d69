#include "elements/inhomogeneity.h"

#include "elements/kind.h"
#include "elements/solver_label.h"

namespace tarno {

void WriteInhomogeneityCommands(std::ostream& out, const std::vector<Element>& inhomogeneities,
                                const CommandWriterContext& ctx, ResultRowSink* rows) {
  const std::string_view prefix = Info(ElementKind::Inhomogeneity).solverPrefix;
  bool any = false;
  for (const Element& in : inhomogeneities) {
    const Row& r = in.row;
    if (!any) PutLine(out, " inhomogeneity ");
    any = true;
    ctx.Raise(3);
    const std::int64_t pid = in.key;
    const bool changeB = r.Flag("ChangeB");
    if (changeB) ctx.Raise(6);
    const std::vector<Vertex>& v = in.vertices;
    if (v.size() < 2) continue;
    const std::string label = r.Text("Label");
    std::string line = " transmissivity ";
    line += ctx.ScenarioOr(r.Flag("chkScenarioHydCond"), r.Text("ScenHydCond"),
                           r.Flag("ChangeK") ? r.Number("HydCond") : -9999, "#.00000E+00 ");
    line += Masked(changeB ? r.Number("BottomElevation") : -9999, "#.00000E+00 ");
    line += Masked(r.Flag("ChangeA") ? r.Number("AverageHead") : -9999, "#.00000E+00 ");
    // The solver wants an extraction rate: the recharge changes its sign.
    line += ctx.ScenarioOr(r.Flag("chkScenarioRecharge"), r.Text("ScenRecharge"),
                           -r.Number("Recharge"), "#.0000000E+00 ");
    line += Masked(r.Flag("ChangeP") ? r.Number("Porosity") : -9999, "#.00000E+00 ");
    line += SolverLabel(prefix, pid) + "_0000";
    PutLine(out, line);
    for (const Vertex& p : v) {
      const std::string vl = SolverVertexLabel(prefix, pid, p.Seq);
      PutLine(out, "  " + Masked(ctx.MX(p.X), "#.000000E+00 ") + Masked(ctx.MY(p.Y), "#.000000E+00 ") +
                       vl);
      if (rows != nullptr) {
        Statement& st = rows->Insert(
            "insert into INResults (Label, TARNOLabel, Conductivity, BottomElev, ExtractRate, "
            "Porosity, DomainArea, AvgPotJump, X1, Y1, XC, YC, StrPotJumpNode, ParabStrPotJump, "
            "RealStrExtrNode, ImagStrExtrNode, RealStrExtrCntr, Tfac, DeltaPNode, DeltaPCntr) "
            "values (?, ?, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)");
        st.Bind(1, label).Bind(2, vl);
        st.Run();
      }
    }
  }
  if (any) PutLine(out, " quit ");
}

}  // namespace tarno
