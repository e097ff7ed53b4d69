#include "elements/barrier.h"

#include "elements/kind.h"
#include "elements/solver_label.h"

namespace tarno {

void WriteBarrierCommands(std::ostream& out, const std::vector<Element>& barriers,
                          const CommandWriterContext& ctx, ResultRowSink* rows) {
  const std::string_view prefix = Info(ElementKind::Barrier).solverPrefix;
  bool any = false;
  for (const Element& b : barriers) {
    const Row& r = b.row;
    if (!any) PutLine(out, " inhomogeneity ");
    any = true;
    ctx.Raise(3);
    const std::int64_t pid = b.key;
    if (r.Number("HydCond") != 0) ctx.Raise(6);
    const std::vector<Vertex>& v = b.vertices;
    if (v.size() < 2) continue;
    const std::int64_t closed = r.Integer("Closed");
    const char* mask = closed == 0 ? "#.00000E+00 " : "#.0000000E+00 ";
    const char* word = closed == 0   ? "slurry open     "
                       : closed == 1 ? "slurry closed   "
                       : closed == 2 ? "slurry outside  "
                       : closed == 3 ? "slurry inside   "
                                     : nullptr;
    if (word != nullptr)
      PutLine(out, std::string(word) + Masked(r.Number("HydCond"), mask) +
                       Masked(r.Number("Thickness"), mask) + Masked(r.Number("Porosity"), mask) +
                       Masked(r.Number("BottomElevation"), mask) + SolverLabel(prefix, pid) +
                       "_0000");
    const std::string label = r.Text("Label");
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::string vl = SolverVertexLabel(prefix, pid, v[i].Seq);
      PutLine(out, "  " + Masked(ctx.MX(v[i].X), "#.000000E+00 ") +
                       Masked(ctx.MY(v[i].Y), "#.000000E+00 ") + vl);
      // One row per wall segment: the last vertex has one only on a closed string.
      if (rows != nullptr && (closed == 1 || i + 1 < v.size())) {
        Statement& st = rows->Insert(
            "insert into NFResults (Label, TARNOLabel, Conductivity, Width, Porosity, "
            "WallBottomElev, X1, Y1, XC, YC, StrPotJumpNode, ParabStrPotJump, DeltaFlowCntr, "
            "DeltaFlowNode) values (?, ?, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)");
        st.Bind(1, label).Bind(2, vl);
        st.Run();
      }
    }
  }
  if (any) PutLine(out, " quit ");
}

}  // namespace tarno
