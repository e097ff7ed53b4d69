// The files the built-in estimator shares with PEST: it reads the control file
// (<base>.pst) that the PEST writer leaves, fills the template (<base>.tpl) with trial
// values, reads the model's outputs with the instruction file (<base>.ins) and leaves
// its result as a parameter value file (<base>.par) that the PEST import reads.
//
// Only what the PEST writer of this program produces is understood: parameters with
// the transforms "log", "none" and "fixed" (a "tied" parameter is refused), one
// template and one instruction file, and instructions made of primary markers
// ("~text~"), line advances ("l<n>") and fixed-column reads ("[name]first:last").
// Anything else is an error that names the file, the line and the text.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tarno {

struct ControlParameter {
  std::string name;       // as in the control file, without the padding blanks
  std::string transform;  // "log", "none" or "fixed"
  double value = 0.0;     // the initial value
  double lower = 0.0;
  double upper = 0.0;
  std::string group;
  double scale = 1.0;  // the model receives value * scale + offset
  double offset = 0.0;
};

struct ControlObservation {
  std::string name;
  double value = 0.0;
  double weight = 1.0;
  std::string group;
};

struct ControlFile {
  std::filesystem::path path;  // the .pst read
  std::vector<ControlParameter> parameters;
  std::vector<ControlObservation> observations;
  std::string modelCommand;            // the model command line
  std::filesystem::path templateFile;  // the .tpl, absolute
  std::string modelInput;              // the file the template becomes (relative name)
  std::filesystem::path instructionFile;
  std::string modelOutput;  // the file the instructions read (relative name)
};

// Reads a control file. Relative names of the template and instruction files are
// taken from the control file's folder. Throws tarno::Error naming the file, the line
// number and the text of the first line that cannot be read.
ControlFile ReadControlFile(const std::filesystem::path& pst);

// The value the model receives for a parameter value: value * scale + offset.
inline double ModelValue(const ControlParameter& p, double value) {
  return value * p.scale + p.offset;
}

// The number written into a parameter field `width` characters wide: the most
// significant digits that fit, right-aligned. Throws tarno::Error when the field is
// too narrow for any form of the number.
std::string FieldNumber(double value, int width);

// The template's text with every parameter field filled from `modelValues` (names
// compared without padding blanks and without regard to case). The first line
// ("ptf <marker>") is dropped. Throws tarno::Error naming `templateName` and the line
// for a field without a value or a marker left open.
std::string FillTemplate(const std::string& templateText,
                         const std::map<std::string, double>& modelValues,
                         const std::string& templateName);

// The observation values that the instructions read from `outputText`, by name (in
// upper case). Throws tarno::Error naming the instruction file and line, or the
// output file, for an instruction it does not know, a marker not found, or columns
// that hold no number.
std::map<std::string, double> ReadObservations(const std::string& instructionText,
                                               const std::string& instructionName,
                                               const std::string& outputText,
                                               const std::string& outputName);

// The text of a parameter value file in PEST's form: "single point", then one line
// per parameter with the name, the value, the scale and the offset.
std::string ParFileText(const std::vector<ControlParameter>& parameters,
                        const std::vector<double>& values);

// Upper case, for the comparison of names.
std::string UpperName(std::string name);

}  // namespace tarno
