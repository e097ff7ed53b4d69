#include "programs/contour/grid.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>

namespace tarno::contour {

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// Walks the text line by line and word by word, keeping line numbers.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  // The line of the last line or word returned.
  int line() const { return last_; }
  // The line the scanner stands on.
  int here() const { return current_; }

  // The words of the line the scanner stands on; moves to the next line.
  // False at the end of the text.
  bool nextLine(std::vector<std::string_view>& words) {
    words.clear();
    if (pos_ >= text_.size()) return false;
    last_ = current_;
    while (pos_ < text_.size() && text_[pos_] != '\n') {
      while (pos_ < text_.size() && isSpace(text_[pos_])) ++pos_;
      std::size_t start = pos_;
      while (pos_ < text_.size() && text_[pos_] != '\n' && !isSpace(text_[pos_])) ++pos_;
      if (pos_ > start) words.push_back(text_.substr(start, pos_ - start));
    }
    if (pos_ < text_.size()) {
      ++pos_;  // the LF
      ++current_;
    }
    return true;
  }

  // The next word, across lines; empty at the end of the text.
  std::string_view nextWord() {
    for (;;) {
      while (pos_ < text_.size() && isSpace(text_[pos_])) ++pos_;
      if (pos_ >= text_.size()) return {};
      if (text_[pos_] == '\n') {
        ++pos_;
        ++current_;
        continue;
      }
      std::size_t start = pos_;
      while (pos_ < text_.size() && text_[pos_] != '\n' && !isSpace(text_[pos_])) ++pos_;
      last_ = current_;
      return text_.substr(start, pos_ - start);
    }
  }

  std::size_t remaining() const { return text_.size() - pos_; }

 private:
  std::string_view text_;
  std::size_t pos_ = 0;
  int current_ = 1;
  int last_ = 0;
};

// Reads one header line that must hold exactly two numbers.
void readPair(Scanner& s, const std::string& file, int lineNo, const char* what, double& a, double& b,
              std::vector<std::string_view>& words) {
  if (!s.nextLine(words))
    throw GridError(file, lineNo, std::string("the file ends before the line of the ") + what);
  if (words.size() != 2)
    throw GridError(file, s.line(),
                    std::string("expected two numbers, the ") + what + ", found " + std::to_string(words.size()) +
                        " fields");
  double v[2];
  for (int k = 0; k < 2; ++k) {
    if (!parseNumber(words[k], v[k]))
      throw GridError(file, s.line(), std::string("not a number in the ") + what + ": " + quoteToken(words[k]));
    if (!std::isfinite(v[k]))
      throw GridError(file, s.line(),
                      std::string("not a finite number in the ") + what + ": " + quoteToken(words[k]));
  }
  a = v[0];
  b = v[1];
}

int readCount(const std::string& file, int line, std::string_view word, const char* what) {
  long long n = 0;
  const char* first = word.data();
  const char* last = word.data() + word.size();
  if (first != last && *first == '+') ++first;
  auto [ptr, ec] = std::from_chars(first, last, n);
  if (ec == std::errc::result_out_of_range || (ec == std::errc() && ptr == last && (n < 2 || n > kMaxGridSide)))
    throw GridError(file, line,
                    std::string("the number of ") + what + " must be from 2 to " + std::to_string(kMaxGridSide) +
                        ", found " + quoteToken(word));
  if (ec != std::errc() || ptr != last || first == last)
    throw GridError(file, line, std::string("the number of ") + what + " is not a whole number: " + quoteToken(word));
  return static_cast<int>(n);
}

}  // namespace

GridError::GridError(const std::string& file, int line, const std::string& what)
    : std::runtime_error(describe(file, line, what)), file_(file), line_(line), detail_(what) {}

std::string GridError::describe(const std::string& file, int line, const std::string& what) {
  if (line > 0) return file + ", line " + std::to_string(line) + ": " + what;
  return file + ": " + what;
}

bool parseNumber(std::string_view token, double& out) {
  const char* first = token.data();
  const char* last = token.data() + token.size();
  if (first != last && *first == '+') {
    ++first;
    if (first != last && *first == '-') return false;
  }
  if (first == last) return false;
  auto [ptr, ec] = std::from_chars(first, last, out, std::chars_format::general);
  if (ptr != last) return false;
  if (ec == std::errc()) return true;
  if (ec != std::errc::result_out_of_range) return false;
  // Out of range: strtod tells overflow (infinite) from underflow (zero).
  std::string copy(first, last);
  out = std::strtod(copy.c_str(), nullptr);
  return true;
}

std::string quoteToken(std::string_view token) {
  constexpr std::size_t kMax = 40;
  std::string out = "\"";
  for (std::size_t k = 0; k < token.size() && k < kMax; ++k) {
    unsigned char c = static_cast<unsigned char>(token[k]);
    out += (c < 32 || c == 127) ? '?' : static_cast<char>(c);
  }
  if (token.size() > kMax) out += "...";
  return out + "\"";
}

Grid parseGrid(std::string_view text, const std::string& file) {
  Scanner s(text);
  std::vector<std::string_view> words;
  if (!s.nextLine(words)) throw GridError(file, 1, "the file is empty; a text grid begins with \"DSAA\"");
  if (words.empty() || words[0] != solver_files::grid::kTag)
    throw GridError(file, 1,
                    "a text grid begins with \"DSAA\", found " + (words.empty() ? std::string("an empty line")
                                                                                 : quoteToken(words[0])));
  if (words.size() > 1) throw GridError(file, 1, "unexpected text after \"DSAA\": " + quoteToken(words[1]));

  Grid g;
  if (!s.nextLine(words)) throw GridError(file, 2, "the file ends before the numbers of columns and rows");
  if (words.size() != 2)
    throw GridError(file, 2,
                    "expected two numbers, the numbers of columns and rows, found " + std::to_string(words.size()) +
                        " fields");
  g.nx = readCount(file, 2, words[0], "columns");
  g.ny = readCount(file, 2, words[1], "rows");
  const long long points = static_cast<long long>(g.nx) * g.ny;
  if (points > kMaxGridPoints)
    throw GridError(file, 2,
                    std::to_string(g.nx) + " by " + std::to_string(g.ny) + " is more than the " +
                        std::to_string(kMaxGridPoints) + " points a grid may have");

  readPair(s, file, 3, "X range", g.xlo, g.xhi, words);
  if (!(g.xlo < g.xhi) || !std::isfinite(g.xhi - g.xlo))
    throw GridError(file, 3, "the X range is empty or too wide: xlo " + quoteToken(words[0]) + ", xhi " +
                                 quoteToken(words[1]));
  readPair(s, file, 4, "Y range", g.ylo, g.yhi, words);
  if (!(g.ylo < g.yhi) || !std::isfinite(g.yhi - g.ylo))
    throw GridError(file, 4, "the Y range is empty or too wide: ylo " + quoteToken(words[0]) + ", yhi " +
                                 quoteToken(words[1]));
  readPair(s, file, 5, "value range", g.zlo, g.zhi, words);

  // Each value takes at least two characters (a digit and a separator), so
  // no more is reserved than the rest of the file can hold: a count far beyond
  // the file's size fails on the missing values, not on the allocation.
  const std::size_t n = static_cast<std::size_t>(points);
  g.z.reserve(std::min(n, s.remaining() / 2 + 1));
  for (std::size_t k = 0; k < n; ++k) {
    std::string_view w = s.nextWord();
    if (w.empty())
      throw GridError(file, s.line() > 0 ? s.line() : s.here(),
                      "the grid ends after " + std::to_string(k) + " of " + std::to_string(n) + " values");
    double v;
    if (!parseNumber(w, v)) throw GridError(file, s.line(), "not a number: " + quoteToken(w));
    if (!std::isfinite(v)) throw GridError(file, s.line(), "not a finite number: " + quoteToken(w));
    g.z.push_back(v);
  }
  std::string_view extra = s.nextWord();
  if (!extra.empty())
    throw GridError(file, s.line(), "more than the " + std::to_string(n) + " values of the grid: " + quoteToken(extra));
  return g;
}

Grid readGridFile(const std::filesystem::path& file) {
  const std::string name = file.string();
  std::ifstream in(file, std::ios::binary);
  if (!in) throw GridError(name, 0, "cannot open the grid file");
  std::string text;
  in.seekg(0, std::ios::end);
  std::streamoff size = in.tellg();
  if (size > 0) {
    in.seekg(0, std::ios::beg);
    text.resize(static_cast<std::size_t>(size));
    in.read(text.data(), size);
    if (!in) throw GridError(name, 0, "cannot read the grid file");
  } else {
    in.clear();
    in.seekg(0, std::ios::beg);
    text.assign(std::istreambuf_iterator<char>(in), {});
    if (in.bad()) throw GridError(name, 0, "cannot read the grid file");
  }
  return parseGrid(text, name);
}

}  // namespace tarno::contour
