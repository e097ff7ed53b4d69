#include "elements/lake.h"

#include "elements/kind.h"
#include "elements/solver_label.h"

namespace tarno {

void WriteLakeCommands(std::ostream& out, const std::vector<Element>& lakes,
                       const CommandWriterContext& ctx) {
  const std::string_view prefix = Info(ElementKind::Lake).solverPrefix;
  bool any = false;
  for (const Element& lake : lakes) {
    const Row& r = lake.row;
    if (!any) PutLine(out, " Inhomogeneity");
    any = true;
    ctx.Raise(3);
    const std::int64_t pid = lake.key;
    const std::vector<Vertex>& v = lake.vertices;
    if (v.size() < 2) continue;
    PutLine(out, " Lake " + Masked(r.Number("InterriorConductivity"), "#.00000E+00 ") +
                     Masked(r.Number("AddedRechargeRate"), "#.00000E+00 ") +
                     Masked(r.Number("Evapotranspiration"), "#.00000E+00 ") +
                     Masked(r.Number("Resistance"), "#.00000E+00 ") + r.Text("StageTableFilename") +
                     " " + SolverLabel(prefix, pid) + "_0000");
    for (const Vertex& p : v)
      PutLine(out, "  " + Masked(ctx.MX(p.X), "#.000000E+00 ") + Masked(ctx.MY(p.Y), "#.000000E+00 ") +
                       SolverVertexLabel(prefix, pid, p.Seq));
  }
  if (any) PutLine(out, " quit ");
}

}  // namespace tarno
