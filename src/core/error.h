// The common exception type of the front end.
//
// Every failure that an operation's error trap is meant to report derives from
// tarno::Error. The description (what()) is the text shown in the second line of
// the general error message; the optional number follows the classic run-time error
// numbers where one exists, so that callers which branch on an error number (the
// solver's error analysis, the "file not found" paths) can do so.
#pragma once

#include <stdexcept>
#include <string>

namespace tarno {

// Classic run-time error numbers used by the front end.
namespace error_number {
inline constexpr int kNone = 0;
inline constexpr int kInvalidCall = 5;      // invalid procedure call or argument
inline constexpr int kOverflow = 6;         // a number does not fit its type
inline constexpr int kDivisionByZero = 11;  // division by zero
inline constexpr int kTypeMismatch = 13;    // text where a number belongs
inline constexpr int kFileNotFound = 53;    // a file that should be there is not
}  // namespace error_number

class Error : public std::runtime_error {
 public:
  explicit Error(const std::string& description, int number = error_number::kNone)
      : std::runtime_error(description), number_(number) {}
  int number() const noexcept { return number_; }

 private:
  int number_;
};

// A number too large for the integer type it is stored in, or not a number at all.
class OverflowError : public Error {
 public:
  explicit OverflowError(const std::string& description = "Overflow")
      : Error(description, error_number::kOverflow) {}
};

// An argument outside the range a helper accepts (a negative count of decimals,
// a conversion factor of zero).
class InvalidArgumentError : public Error {
 public:
  explicit InvalidArgumentError(const std::string& description)
      : Error(description, error_number::kInvalidCall) {}
};

// A failure of the user interface port itself, not of the operation that called it
// (a port that cannot give the answer asked for). The error traps of the operations
// let it pass through, so that it reaches whoever drives the port instead of being
// shown as the operation's failure.
class UiPortFailure : public Error {
 public:
  explicit UiPortFailure(const std::string& description) : Error(description) {}
};

}  // namespace tarno
