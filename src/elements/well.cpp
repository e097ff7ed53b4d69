#include "elements/well.h"

#include "elements/kind.h"
#include "elements/solver_label.h"

namespace tarno {

namespace {

void AddResultRow(ResultRowSink& rows, const std::string& label, const std::string& solverLabel,
                  double x, double y, double specifiedHead) {
  Statement& st = rows.Insert(
      "insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, "
      "Head) values (?, ?, ?, ?, 0, ?, 0, 0)");
  st.Bind(1, label).Bind(2, solverLabel).Bind(3, x).Bind(4, y).Bind(5, specifiedHead);
  st.Run();
}

}  // namespace

std::string WellSolverLabel(std::int64_t vid) {
  return SolverLabel(Info(ElementKind::Well).solverPrefix, vid);
}

void WriteWellCommands(std::ostream& out, const std::vector<Element>& wells,
                       const CommandWriterContext& ctx, ResultRowSink* rows) {
  struct Block {
    int head, pp, pond, transient;
    const char* menu;
    const char* mode;
  };
  static const Block kBlocks[7] = {
      {0, 0, 0, 0, " well ", " discharge "},     {1, 0, 0, 0, " well ", " head "},
      {0, 1, 0, 0, " ppwell ", " discharge "},   {1, 1, 0, 0, " ppwell ", " head "},
      {0, 0, 0, 1, " twell ", " discharge "},    {0, 0, 1, 0, " sinkdisk ", " discharge "},
      {1, 0, 1, 0, " sinkdisk ", " head "},
  };
  std::string lastTransientLabel;
  bool haveTransient = false;
  for (int b = 0; b < 7; ++b) {
    const Block& k = kBlocks[b];
    bool any = false;
    for (const Element& w : wells) {
      const Row& r = w.row;
      if (!FieldHolds(r, "HeadSpecified", k.head) || !FieldHolds(r, "PPWell", k.pp) ||
          !FieldHolds(r, "Pond", k.pond) || !FieldHolds(r, "Transient", k.transient))
        continue;
      if (!any) {
        PutLine(out, k.menu);
        PutLine(out, k.mode);
      }
      any = true;
      if (k.pp) ctx.Raise(3);
      const std::string wl = WellSolverLabel(w.key);
      const double x = w.X();
      const double y = w.Y();
      const double mx = ctx.MX(x);
      const double my = ctx.MY(y);
      const double head = r.Number("Head");
      const double radius = r.Number("Radius");
      const std::string label = r.Text("Label");
      const char* e6 = "#.000000E+00 ";
      switch (b) {
        case 0:
          // The first block's masks differ from the second's; kept as they are.
          PutLine(out, "  " + Masked(mx, "#0.000000E+00 ") + Masked(my, "0.000000E+00 ") +
                           Masked(head, "0.00000E+00 ") + Masked(radius, "0.00000E+00 ") + wl);
          break;
        case 1:
          PutLine(out, "  " + Masked(mx, e6) + Masked(my, e6) + Masked(head, e6) +
                           Masked(radius, e6) + wl);
          break;
        case 2:
        case 3:
          PutLine(out, "  " + Masked(mx, e6) + Masked(my, e6) + Masked(r.Number("TopElev"), e6) +
                           Masked(r.Number("BottomElev"), e6) + Masked(head, e6) +
                           Masked(radius, e6) + wl);
          break;
        case 4: {
          const double time = r.Number("Time");
          const std::string tail = Masked(r.Number("StartHead"), e6) + Masked(r.Number("SS"), e6) +
                                   Masked(radius, e6) + wl;
          if (r.Integer("Cyclic") != 0) {
            // A pumping schedule: on at 0, off at Time, on at 2 Time, ... by adding
            // and subtracting the same discharge.
            const std::int64_t lines = 2 * r.Integer("Cycles");
            double sign = 1.0;
            for (std::int64_t i = 1; i <= lines; ++i) {
              PutLine(out, "  " + Masked(mx, e6) + Masked(my, e6) + Masked(sign * head, e6) +
                               Masked(static_cast<double>(i - 1) * time, e6) + tail);
              sign = -sign;
            }
          } else {
            PutLine(out, "  " + Masked(mx, e6) + Masked(my, e6) + Masked(head, e6) +
                             Masked(time, e6) + tail);
          }
          break;
        }
        case 5:
          // The literal zero at the end is part of the format.
          PutLine(out, "  " + Masked(mx, e6) + Masked(my, e6) + Masked(mx + radius, "#.000000E+00  ") +
                           Masked(my, e6) + Masked(head, "##.000000E+00 ") + ".000000E+00 " + wl);
          break;
        case 6:
          PutLine(out, "  " + Masked(mx, e6) + Masked(my, e6) + Masked(mx + radius, "#.000000E+00  ") +
                           Masked(my, e6) + Masked(head, e6) + wl);
          break;
      }
      if (rows != nullptr && b <= 4) {
        // A schedule spread over several rows with one label gets one result row.
        const bool repeat = b == 4 && haveTransient && label == lastTransientLabel;
        if (!repeat) AddResultRow(*rows, label, wl, x, y, (b == 1 || b == 3) ? head : 0.0);
      }
      if (b == 4) {
        lastTransientLabel = label;
        haveTransient = true;
      }
    }
    if (any) PutLine(out, " quit ");
  }
}

void WriteWellParticleCommands(std::ostream& out, const std::vector<Element>& wells,
                               const ModelFrame& frame) {
  for (const Element& w : wells) {
    const std::int64_t n = w.row.Integer("NParticles");
    if (n <= 0) continue;
    PutLine(out, " well " + Masked(WToM_X(frame, w.X()), "0.0000000E+00 ") +
                     Masked(WToM_Y(frame, w.Y()), "0.0000000E+00 ") +
                     Masked(w.row.Number("StartElev"), "0.00000E+00 ") + std::to_string(n));
  }
}

WellCounts CountWells(Database& db) {
  WellCounts c;
  Statement st = db.PrepareRaw("select HeadSpecified, PPWell, Transient from Wells");
  while (st.Step()) {
    const bool head = st.GetInt64(0) != 0, pp = st.GetInt64(1) != 0, tr = st.GetInt64(2) != 0;
    if (pp) {
      ++c.partiallyPenetrating;
      c.unknowns += head ? 3 : 2;
    } else if (tr) {
      ++c.transient;
    } else {
      ++c.twoD;
      if (head) c.unknowns += 1;
    }
  }
  return c;
}

double HalfMeanHeadOfHeadWells(Database& db) {
  Statement q = db.Prepare("select 0.5*avg(head) as AvgHead from wells where HeadSpecified=1;");
  return q.Step() ? q.GetDouble("AvgHead") : 0.0;
}

}  // namespace tarno
