// Completes the template of tier.f90: the line "@ACCESSORS@" becomes the interfaces of all parameters.
//   fortran_interfaces TEMPLATE OUTPUT
#include <cstdio>
#include <fstream>
#include <string>

#include "parameter_rows.h"

namespace {

std::string procedure(const std::string& name, const std::string& arguments,
                      const std::string& declarations) {
  return "    subroutine " + name + "(" + arguments + ") bind(c, name=\"" + name + "\")\n" +
         "      import :: c_int, c_double, c_char\n" + declarations + "    end subroutine\n";
}

std::string number(const ParameterRow& row) {
  const std::string type = row.type == "real" ? "real(c_double)" : "integer(c_int)";
  const std::string name(row.upper_name);
  return procedure("TIER_SET_" + name, "val", "      " + type + ", intent(in) :: val\n") +
         procedure("TIER_GET_" + name, "val", "      " + type + ", intent(out) :: val\n");
}

std::string text(const ParameterRow& row) {
  const std::string in = "      integer(c_int), intent(in) :: length\n",
                    inout = "      integer(c_int), intent(inout) :: length\n", name(row.upper_name);
  return procedure("TIER_SET_" + name, "text, length",
                   "      character(kind=c_char), intent(in) :: text(*)\n" + in) +
         procedure("TIER_GET_" + name, "text, length",
                   "      character(kind=c_char), intent(out) :: text(*)\n" + in) +
         procedure("TIER_ISET_" + name, "codes, length",
                   "      integer(c_int), intent(in) :: codes(*)\n" + inout) +
         procedure("TIER_IGET_" + name, "codes, length",
                   "      integer(c_int), intent(out) :: codes(*)\n" + inout);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: fortran_interfaces TEMPLATE OUTPUT\n"), 1;
  std::ifstream in(argv[1]);
  std::ofstream out(argv[2]);
  if (!in || !out) return std::perror(in ? argv[2] : argv[1]), 1;
  std::string line;
  while (std::getline(in, line)) {
    if (line != "@ACCESSORS@") {
      out << line << '\n';
      continue;
    }
    for (const ParameterRow& row : parameter_rows) out << (row.type == "text" ? text(row) : number(row));
  }
  return out.flush() ? 0 : (std::perror(argv[2]), 1);
}
