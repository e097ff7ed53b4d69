#include "app/help_model.h"

#include <cctype>
#include <filesystem>
#include <map>
#include <utility>

#include "app/menu_model.h"

namespace tarno {

namespace {

namespace fs = std::filesystem;

HelpSection S(const char* title) { return {HelpIndex::HeadingAnchor(title), title}; }

// The dialogs' pages. A dialog with tabs may have a target per tab; the entry with
// an empty tab is the dialog's own.
struct DialogPage {
  const char* dialog;
  const char* tab;
  const char* target;
};

const std::vector<DialogPage>& DialogPages() {
  static const std::vector<DialogPage> pages = {
      {"Welcome", "", "getting-started.md#the-welcome-dialog"},
      {"NewDatabaseWizard", "", "projects.md#a-new-project"},
      {"ProjectSettings", "", "projects.md#project-settings"},
      {"UnitChange", "", "projects.md#units"},
      {"ModelSettings", "", "solving.md#model-settings"},
      {"ModelSettings", "Aquifer Properties", "solving.md#aquifer-properties"},
      {"ModelSettings", "Interface Flow", "solving.md#interface-flow"},
      {"ModelSettings", "Contours", "solving.md#contours"},
      {"ModelSettings", "Streamline Tracing Settings", "solving.md#streamline-tracing"},
      {"ModelSettings", "Solver", "solving.md#solver"},
      {"ModelSettings", "Scenarios", "solving.md#scenarios"},
      {"Iterations", "", "solving.md#advice-on-iterations"},
      {"SolvePrompt", "", "solving.md#solving-again"},
      {"FormContinueSolve", "", "solving.md#continuing-a-solve"},
      {"relax", "", "solving.md#surface-water-relaxation"},
      {"Converge", "", "solving.md#solver-convergence"},
      {"SolverIntegrity", "", "solving.md#solver-integrity-check"},
      {"Inspector", "", "solving.md#instant-inspector-settings"},
      {"LSInfo", "", "solving.md#linesink-results"},
      {"INInfo", "", "solving.md#inhomogeneity-results"},
      {"Lakeinfo", "", "solving.md#lake-balance"},
      {"ResultViewer", "", "solving.md#the-results-table"},
      {"GUIOptions", "", "map.md#gui-options"},
      {"RestoreWindow", "", "map.md#saved-windows"},
      {"MapBrowser", "", "base-maps.md#the-base-map-browser"},
      {"BaseMapBrowserOptions", "", "base-maps.md#base-map-options"},
      {"ViewShape", "", "base-maps.md#attribute-table-of-a-shapefile"},
      {"ViewGraphics", "", "base-maps.md#layers-of-a-cad-file-or-an-image"},
      {"SelectArea", "", "map.md#select-with-window"},
      {"SelectAreaOptions", "", "map.md#the-selected-elements"},
      {"WellProperties", "", "wells.md#well-properties"},
      {"WellProperties", "General", "wells.md#general"},
      {"WellProperties", "3-D Geometry", "wells.md#3-d-geometry"},
      {"WellProperties", "Transient Well", "wells.md#transient-well"},
      {"WellProperties", "Other", "wells.md#other"},
      {"LinesinkString", "", "linesinks.md#linesink-string-properties"},
      {"LinesinkString", "General", "linesinks.md#general"},
      {"LinesinkString", "Routing", "linesinks.md#routing"},
      {"LinesinkString", "Scenarios", "linesinks.md#scenarios"},
      {"NoFlowString", "", "barriers-and-areas.md#barrier-properties"},
      {"Inhomogeneity", "", "barriers-and-areas.md#inhomogeneity-properties"},
      {"Inhomogeneity", "Scenarios", "barriers-and-areas.md#inhomogeneity-scenarios"},
      {"Lake", "", "barriers-and-areas.md#lake-properties"},
      {"UniformFlow", "", "barriers-and-areas.md#uniform-flow-properties"},
      {"TestPointProperties", "", "observations.md#test-point-properties"},
      {"ParticleProperties", "", "observations.md#particle-properties"},
      {"FluxInspectDialog", "", "observations.md#flux-lines-protection-areas-and-boundaries"},
      {"TextLabelProperties", "", "observations.md#text-label-properties"},
      {"LSConfirm", "", "map.md#editing-vertices"},
      {"Calibration", "", "observations.md#calibration-statistics"},
      {"Scenarios", "", "solving.md#implementing-scenarios"},
      {"ReprojectMaps", "", "converting-maps.md#reprojecting-maps"},
      {"MapTarget", "", "converting-maps.md#reprojecting-chosen-maps"},
      {"PEST", "", "estimation.md#the-pest-dialog"},
      {"UCODE", "", "estimation.md#the-ucode-dialog"},
      {"TPLIterPrompt", "", "estimation.md#template-advice"},
      {"OPTWeight", "", "estimation.md#test-point-weights"},
      {"VectorExport", "", "exporting-geometry.md#exporting-a-dxf-or-boundary-line-file"},
      {"ExportShapefile", "", "exporting-geometry.md#exporting-shapefiles"},
      {"VectorImport", "", "gis-files.md#importing-a-gis-vector-file"},
  };
  return pages;
}

}  // namespace

const std::vector<HelpTopic>& HelpIndex::Contents() {
  static const std::vector<HelpTopic> contents = {
      {kHomePage, "TARNO Help", {}},
      {"getting-started.md",
       "Getting Started with the Example",
       {S("The Welcome dialog"), S("Opening the example"), S("Solving the example"),
        S("What the map shows"), S("Zooming and moving around")}},
      {"projects.md",
       "Projects",
       {S("A new project"), S("Opening and closing"), S("Project settings"), S("Units"),
        S("A duplicate of a project"), S("The files of a project")}},
      {"solving.md",
       "Solving and Model Settings",
       {S("Solving"), S("Model settings"), S("Aquifer properties"), S("Interface flow"),
        S("Contours"), S("Streamline tracing"), S("Solver"), S("Scenarios"),
        S("Implementing scenarios"), S("Solving again"), S("Continuing a solve"),
        S("Surface water relaxation"), S("Solver convergence"), S("Solver integrity check"),
        S("Results of an element"), S("The results table"), S("Run files"),
        S("When a solve fails")}},
      {"map.md",
       "The Map and the Window",
       {S("The window"), S("Zooming and scrolling"), S("The View menu"), S("Editing vertices"),
        S("Saved windows"), S("GUI options"), S("Drawing and editing on the map"),
        S("Pictures of the map")}},
      {"base-maps.md",
       "Base Maps",
       {S("Adding maps"), S("The base map browser"), S("Base map options"),
        S("Attribute table of a shapefile"), S("Layers of a CAD file or an image")}},
      {"wells.md",
       "Wells",
       {S("Well properties"), S("General"), S("3-D geometry"), S("Transient well"), S("Other")}},
      {"linesinks.md",
       "Line-Sink Strings",
       {S("Linesink string properties"), S("General"), S("Routing"), S("Scenarios")}},
      {"barriers-and-areas.md",
       "Barriers, Inhomogeneities, Lakes and Uniform Flow",
       {S("Barrier properties"), S("Inhomogeneity properties"), S("Inhomogeneity scenarios"),
        S("Lake properties"), S("Uniform flow properties")}},
      {"observations.md",
       "Observations, Particles and Labels",
       {S("Test point properties"), S("Particle properties"),
        S("Flux lines, protection areas and boundaries"), S("Text label properties")}},
      {"converting-maps.md",
       "Converting and Reprojecting Maps",
       {S("Converting maps"), S("Reprojecting maps"), S("Reprojecting chosen maps")}},
      {"estimation.md",
       "Parameter Estimation with PEST and UCODE",
       {S("The PEST dialog"), S("The UCODE dialog"), S("Template advice"),
        S("Test point weights")}},
      {"exporting-geometry.md",
       "Exporting Geometry",
       {S("Exporting a DXF or boundary line file"), S("Exporting shapefiles")}},
      {"gis-files.md",
       "GIS Files: GeoPackage Export and Vector Import",
       {S("Importing a GIS vector file"), S("The field mapping"), S("Coordinate systems"),
        S("Exporting to a GeoPackage")}},
      {"batch.md",
       "The Batch Program tarnocmd",
       {S("Creating a project"), S("Describing a project"), S("Solving a project"),
        S("Result tables"), S("Exit status")}},
      {"how-it-works.md",
       "How TARNO Works",
       {S("The programs"), S("A solve step by step"), S("The files beside a project")}},
      {"release-notes.md",
       "Release Notes",
       {S("What this version does"), S("Not yet in this version")}},
  };
  return contents;
}

std::string HelpIndex::PageForKey(const std::string& menuKey) {
  for (const auto& h : MenuModel::HelpPages()) {
    if (h.key == menuKey) return h.page;
  }
  return {};
}

std::string HelpIndex::PageForDialog(const std::string& dialogName, const std::string& tab) {
  std::string own;
  for (const DialogPage& d : DialogPages()) {
    if (dialogName != d.dialog) continue;
    if (!tab.empty() && tab == d.tab) return d.target;
    if (*d.tab == '\0') own = d.target;
  }
  return own;
}

std::vector<std::string> HelpIndex::DialogsWithPages() {
  std::vector<std::string> names;
  for (const DialogPage& d : DialogPages()) {
    if (*d.tab == '\0') names.emplace_back(d.dialog);
  }
  return names;
}

std::string HelpIndex::TitleOf(const std::string& page) {
  for (const HelpTopic& t : Contents()) {
    if (t.page == page) return t.title;
  }
  return {};
}

HelpTarget HelpIndex::Split(const std::string& target) {
  const auto hash = target.find('#');
  if (hash == std::string::npos) return {target, {}};
  return {target.substr(0, hash), target.substr(hash + 1)};
}

std::string HelpIndex::HeadingAnchor(const std::string& heading) {
  std::string anchor;
  for (const char c : heading) {
    const auto u = static_cast<unsigned char>(c);
    if (std::isalnum(u) != 0 && u < 128) {
      anchor += static_cast<char>(std::tolower(u));
    } else if (c == ' ' || c == '-') {
      anchor += '-';
    } else if (c == '_' || u >= 128) {
      anchor += c;
    }
  }
  // Blanks at either end of a heading make no part of its anchor.
  const auto first = anchor.find_first_not_of('-');
  if (first == std::string::npos) return {};
  const auto last = anchor.find_last_not_of('-');
  return anchor.substr(first, last - first + 1);
}

std::string HelpIndex::FindFolder(const std::vector<std::string>& candidates) {
  for (const std::string& folder : candidates) {
    if (folder.empty()) continue;
    std::error_code ec;
    if (fs::is_regular_file(fs::path(folder) / kHomePage, ec)) return folder;
  }
  return {};
}

}  // namespace tarno
