// The drawing of the model on the map: every element kind, the observation and
// tracing objects, the hydrologic units, the uniform flow and the text labels.
//
// Each operation reads what it draws from the project store at the time of the
// call (nothing is kept between redraws) and draws through the graphics layer on
// the surface it is bound to. Drawing modes: 1 normal, 2 selected (palette 12),
// 3 erase (the map's background), and for wells 4 (a head below -1000 in the
// results, palette 10).
#pragma once

#include <cstdint>

#include "display/map_state.h"
#include "display/vgraph.h"

namespace tarno {

class Database;
class UserInterface;

enum DrawMode : int { kDrawNormal = 1, kDrawSelected = 2, kDrawErase = 3, kDrawDryWell = 4 };

// One drawing pass: the layer, the map state, the open project, the port for
// messages.
struct DrawContext {
  VGraphGDI& g;
  const MapState& state;
  Database& db;
  UserInterface& ui;
};

// All elements in their order, then the selected one again (the redraw's step).
void ElemDrawAll(DrawContext& ctx);

void ElemDrawUniformFlow(DrawContext& ctx);
void ElemDrawAllWells(DrawContext& ctx);
void ElemDrawWell(DrawContext& ctx, double x, double y, double setback, double radius, int ppWell,
                  int transient, int mode);
void ElemDrawAllLinesinks(DrawContext& ctx);
void ElemDrawLinesinkString(DrawContext& ctx, std::int64_t pid, int mode);
void ElemDrawAllLakes(DrawContext& ctx);
void ElemDrawLakes(DrawContext& ctx, std::int64_t pid, int mode);
void ElemDrawAllNoFlow(DrawContext& ctx);
void ElemDrawNoFlowString(DrawContext& ctx, std::int64_t pid, int mode, bool closed);
void ElemDrawAllInhos(DrawContext& ctx);
void ElemDrawInho(DrawContext& ctx, std::int64_t pid, int mode, bool flag, Colour color);
// A vertex marker (the selected vertex of a string, the vertices shown).
void ElemDrawVertex(DrawContext& ctx, double x, double y, int mode);

void ModelDrawAllTestPoints(DrawContext& ctx);
// Position, modelled and observed value, display style 0 to 3, colour mode 1 to 3,
// and the type ("Piezometer", "Gage", "Lake Stage").
void ModelDrawTestPoint(DrawContext& ctx, double x, double y, double modelled, double observed,
                        int style, int colourMode, const std::string& type,
                        const std::string& label = {});
void ModelDrawAllParticles(DrawContext& ctx);
void ModelDrawParticle(DrawContext& ctx, double x, double y, int mode);
void ModelDrawAllFluxInspect(DrawContext& ctx);
void ModelDrawFluxInspect(DrawContext& ctx, std::int64_t pid, int mode);
void ModelDrawAllCapzones(DrawContext& ctx);
void ModelDrawCapzone(DrawContext& ctx, std::int64_t pid, int mode);
void ModelDrawAllDomains(DrawContext& ctx);
void ModelDrawDomain(DrawContext& ctx, std::int64_t pid, int mode);
void ModelDrawAllText(DrawContext& ctx);

}  // namespace tarno
