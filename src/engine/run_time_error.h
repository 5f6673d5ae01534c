#pragma once
// A failure that carries the program's error number: what ends a walk reaches its owner
// as that number.

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace regvex {

inline constexpr int kErrorOverflow = 6;
inline constexpr int kErrorOutOfMemory = 7;
inline constexpr int kErrorAccessDenied = 5;
// The same number, as the failure of a text operation given an impossible length.
inline constexpr int kErrorInvalidProcedureCall = 5;
inline constexpr int kErrorObjectDoesNotSupport = 438;

class RunTimeError : public std::runtime_error {
  public:
    RunTimeError(int number, const std::string& what) : std::runtime_error(what), number_(number) {}
    int number() const { return number_; }

  private:
    int number_;
};

// The error number of a caught failure: its own number when it carries one, 7 when
// memory ran out, 5 for anything else.
inline int ErrorNumberOf(const std::exception& error) {
    if (const auto* numbered = dynamic_cast<const RunTimeError*>(&error)) {
        return numbered->number();
    }
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) {
        return kErrorOutOfMemory;
    }
    return kErrorAccessDenied;
}

}  // namespace regvex
