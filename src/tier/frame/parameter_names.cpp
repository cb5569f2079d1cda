// Exported access to the parameters by name. A wrong name is a fault of the calling program and stops it.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <variant>

#include "tier/api/tier.h"
#include "tier/store/info.h"
#include "tier/store/log_file.h"
#include "tier/store/parameter_list.h"

namespace {

enum value_type { type_integer = 1, type_text = 2, type_real = 3, type_logical = 4 };

std::string_view text_of(const char* text, const int* length) {
  return tier::trimmed({text, static_cast<std::size_t>(std::max(*length, 0))});
}

[[noreturn]] void terminate(const std::string& text, const char* last_words) {
  tier::message(text);
  tier::message(last_words);
  tier::flush_output();
  std::exit(EXIT_FAILURE);
}

template <class T>
struct kind;
template <>
struct kind<int> {
  static constexpr const char* words = "integer";
};
template <>
struct kind<double> {
  static constexpr const char* words = "double precision";
};
template <>
struct kind<bool> {
  static constexpr const char* words = "logical";
};
template <>
struct kind<std::string> {
  static constexpr const char* words = "character";
};

/// The place of a parameter of type T and, for texts, its limit.
template <class T>
T& place_of(std::string_view name, const char* routine, int* width = nullptr) {
  const tier::parameter_entry* p = tier::find_parameter(name);
  if (!p || !std::holds_alternative<T tier::parameters::*>(p->member))
    terminate("Unknown " + std::string(kind<T>::words) + " parameter <" + std::string(name) + "> (" +
                  routine + ")!",
              "tier_set:terminated!");
  if (width) *width = p->width;
  return *std::get<T*>(p->place());
}

void store_text(std::string& place, int width, std::string_view text) {
  place = tier::trimmed(text.substr(0, static_cast<std::size_t>(width)));
}

void fetch_text(const std::string& place, char* text, int length) {
  std::fill_n(text, std::max(length, 0), ' ');
  place.copy(text, static_cast<std::size_t>(std::max(length, 0)));
}

const tier::parameter_entry& any_of(std::string_view name, const char* routine) {
  if (const tier::parameter_entry* p = tier::find_parameter(name)) return *p;
  terminate("Unknown or unsupported parameter <" + std::string(name) + "> (" + routine + ")!",
            "tier_setany:terminated!");
}

void require(bool fits, std::string_view name) {
  if (!fits)
    terminate("Parameter <" + std::string(name) + "> has unexpected type (setany)!",
              "tier_setany:terminated!");
}

int as_callers(bool value) { return value ? -1 : 0; }

}  // namespace

void TIER_SETINTEGER(const char* name, const int* length, const int* value) {
  place_of<int>(text_of(name, length), "setinteger") = *value;
}
void TIER_SETDBLE(const char* name, const int* length, const double* value) {
  place_of<double>(text_of(name, length), "setdble") = *value;
}
void TIER_SETLOGICAL(const char* name, const int* length, const int* value) {
  place_of<bool>(text_of(name, length), "setlogical") = *value != 0;
}
void TIER_SETCHAR(const char* name, const int* length, const char* text, const int* text_length) {
  int width = 0;
  std::string& place = place_of<std::string>(text_of(name, length), "setchar", &width);
  store_text(place, width, text_of(text, text_length));
}
void TIER_GETINTEGER(const char* name, const int* length, int* value) {
  *value = place_of<int>(text_of(name, length), "getinteger");
}
void TIER_GETDBLE(const char* name, const int* length, double* value) {
  *value = place_of<double>(text_of(name, length), "getdble");
}
void TIER_GETLOGICAL(const char* name, const int* length, int* value) {
  *value = as_callers(place_of<bool>(text_of(name, length), "getlogical"));
}
void TIER_GETCHAR(const char* name, const int* length, char* text, const int* text_length) {
  fetch_text(place_of<std::string>(text_of(name, length), "getchar"), text, *text_length);
}

void TIER_GETTYPE(const char* name, const int* length, int* type) {
  constexpr std::array by_alternative{type_integer, type_real, type_logical, type_text};
  const tier::parameter_entry* p = tier::find_parameter(text_of(name, length));
  *type = p ? by_alternative[p->member.index()] : 0;
}

void TIER_SETANY(const char* name, const int* length, const int* type, const int* integer, const double* real,
                 const int* logical, const char* text, const int* text_length) {
  const std::string_view key = text_of(name, length);
  const tier::parameter_entry& p = any_of(key, "setany");
  const tier::parameter_reference place = p.place();
  if (int* const* i = std::get_if<int*>(&place)) {
    require(*type == type_integer, key);
    **i = *integer;
  } else if (double* const* d = std::get_if<double*>(&place)) {
    require(*type >= type_real, key);
    **d = *real;
  } else if (bool* const* b = std::get_if<bool*>(&place)) {
    require(*type == type_logical, key);
    **b = *logical != 0;
  } else {
    require(*type == type_text, key);
    store_text(*std::get<std::string*>(place), p.width, text_of(text, text_length));
  }
}

void TIER_GETANY(const char* name, const int* length, int* type, int* integer, double* real, int* logical,
                 char* text, const int* text_length) {
  const tier::parameter_entry& p = any_of(text_of(name, length), "getany");
  const tier::parameter_reference place = p.place();
  if (int* const* i = std::get_if<int*>(&place)) {
    *type = type_integer;
    *integer = **i;
  } else if (double* const* d = std::get_if<double*>(&place)) {
    *type = type_real;
    *real = **d;
  } else if (bool* const* b = std::get_if<bool*>(&place)) {
    *type = type_logical;
    *logical = as_callers(**b);
  } else {
    *type = type_text;
    fetch_text(*std::get<std::string*>(place), text, *text_length);
  }
}

void TIER_GETINT_NU(void) {}
void TIER_GETDBLE_NU(void) {}
void TIER_GETRE_NU(void) {}
void TIER_GETLO_NU(void) {}
void TIER_GETTE_NU(void) {}
void TIER_GETSPEC_NU(void) {}
