// Reading of name=value lines.
#include "tier/codes/parameter_file.h"

#include <unistd.h>

#include <charconv>
#include <cmath>
#include <fstream>
#include <limits>
#include <optional>
#include <string_view>
#include <variant>

#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameter_list.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

/// A place in the call by the name of the argument.
parameter_reference argument_place(call_arguments& call, std::string_view name, bool simple) {
  struct named {
    std::string_view name;
    parameter_reference place;
    bool simple_only = false;
  };
  const named arguments[] = {
      {"matrix", &call.matrix},   {"nsolve", &call.nsolve},   {"iswtch", &call.iswtch},
      {"ifirst", &call.ifirst},   {"ncyc", &call.ncyc},       {"idump", &call.idump},
      {"iout", &call.iout},       {"chktol", &call.chktol},   {"a_cmplx", &call.a_cmplx},
      {"g_cmplx", &call.g_cmplx}, {"p_cmplx", &call.p_cmplx}, {"w_avrge", &call.w_avrge},
      {"nsys", &call.nsys},       {"eps", &call.eps, true},   {"control", &call.matrix, true}};
  for (const named& a : arguments)
    if (a.name == name && (simple || !a.simple_only)) return a.place;

  constexpr std::string_view stem = "iscale(";
  constexpr int most_iscale = 25;
  if (name.starts_with(stem) && name.ends_with(')')) {
    const std::string_view number = name.substr(stem.size(), name.size() - stem.size() - 1);
    int i = 0;
    const auto end = std::from_chars(number.data(), number.data() + number.size(), i).ptr;
    if (end == number.data() + number.size() && i >= 1 && i <= most_iscale) return &call.iscale[i];
  }
  if (const parameter_entry* p = find_parameter(name)) return p->place();
  return static_cast<int*>(nullptr);
}

std::string_view strip(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

std::optional<int> as_integer(std::string_view text) {
  if (text.starts_with('+')) text.remove_prefix(1);
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  return value;
}

std::optional<double> as_real(std::string_view text) {
  std::string number(text.starts_with('+') ? text.substr(1) : text);
  for (char& ch : number)
    if (ch == 'd' || ch == 'D') ch = 'e';
  double value = 0.0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc() || end != number.data() + number.size()) return {};
  return value;
}

std::optional<bool> as_logical(std::string_view text) {
  if (text.starts_with('.')) text.remove_prefix(1);
  if (text.starts_with('t') || text.starts_with('T')) return true;
  if (text.starts_with('f') || text.starts_with('F')) return false;
  return {};
}

std::optional<std::string> as_text(std::string_view text) {
  const bool quoted =
      text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front();
  if (!quoted) return {};
  return std::string(trimmed(text.substr(1, text.size() - 2)));
}

template <class T>
bool store(T* place, const std::optional<T>& value) {
  if (value) *place = *value;
  return value.has_value();
}

bool assign(const parameter_reference& place, std::string_view text) {
  if (int* const* i = std::get_if<int*>(&place)) return store(*i, as_integer(text));
  if (double* const* d = std::get_if<double*>(&place)) return store(*d, as_real(text));
  if (bool* const* b = std::get_if<bool*>(&place)) return store(*b, as_logical(text));
  return store(std::get<std::string*>(place), as_text(text));
}

bool is_missing(const parameter_reference& place) {
  int* const* i = std::get_if<int*>(&place);
  return i && !*i;
}

[[noreturn]] void bad_line(const std::string& file, int number, const std::string& why) {
  fail(ierr_internal, "read_input_parms: " + why + " (" + file + ", line " + std::to_string(number) + ")");
}

void read_line(const std::string& file, int number, std::string_view line, call_arguments& call,
               bool simple) {
  if (line.empty()) return;
  const auto equals = line.find('=');
  if (equals == std::string_view::npos) bad_line(file, number, "a line name=value is expected");
  const std::string name(strip(line.substr(0, equals)));
  if (simple && name == "hclose") return;  // known, but nothing uses it
  const parameter_reference place = argument_place(call, name, simple);
  if (is_missing(place)) bad_line(file, number, "unknown variable >" + name + "<");
  if (!assign(place, strip(line.substr(equals + 1))))
    bad_line(file, number, "argument of variable >" + name + "< has unexpected type!");
}

}  // namespace

std::string input_file_name() {
  for (const std::string& name : {parm().filnam + ".in", std::string("tier.in")})
    if (access(name.c_str(), F_OK) == 0) return name;
  return {};
}

void read_assignments(const std::string& file, call_arguments& call, bool simple) {
  std::ifstream in(file);
  if (!in) fail(ierr_internal, "read_input_parms: error in opening input file " + file);
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) read_line(file, number, strip(line), call, simple);
  if (in.bad()) fail(ierr_internal, "read_input_parms: error in reading input file " + file);
}

void read_input_parms(call_arguments& call) {
  if (!parm().allow_filnam_in || call.file_was_read) return;
  if (!parm().allow_private_in) {
    parm().allow_filnam_in = false;
    return;
  }
  const std::string file = input_file_name();
  if (file.empty()) return;
  read_assignments(file, call, false);
  trace(trace_topic::call, "read_input_parms: tier parameters have been changed (" + file + ")");
}

bool set_control(call_arguments& call, const std::string& name, double value) {
  constexpr std::string_view known[] = {"control", "ifirst",  "nsolve", "ncyc",    "iswtch",
                                        "idump",   "iout",    "eps",    "a_cmplx", "g_cmplx",
                                        "p_cmplx", "w_avrge", "chktol"};
  if (name == "hclose") return true;
  for (const std::string_view k : known) {
    if (k != name) continue;
    const parameter_reference place = argument_place(call, name, true);
    if (double* const* real = std::get_if<double*>(&place)) return **real = value, true;
    if (!(std::abs(value) <= std::numeric_limits<int>::max())) return false;
    *std::get<int*>(place) = static_cast<int>(value);
    return true;
  }
  return false;
}

}  // namespace tier
