// Matrix Market files of matrices and interpolation, and lists of states.
#include "tier/report/dump.h"

#include <cstdio>
#include <memory>
#include <string>

#include "tier/store/formatted.h"
#include "tier/store/ierr.h"
#include "tier/store/info.h"
#include "tier/store/parameters.h"

namespace tier {

namespace {

class text_file {
 public:
  explicit text_file(std::string name) : name_(std::move(name)), file_(std::fopen(name_.c_str(), "w")) {
    if (!file_) fail(ierr_internal, "Cannot open dump file <" + name_ + "> for writing (dump)");
  }
  ~text_file() {
    if (file_) std::fclose(file_);
  }
  text_file(const text_file&) = delete;
  text_file& operator=(const text_file&) = delete;

  std::FILE* handle() { return file_; }
  void close() {
    const bool bad = std::ferror(file_) != 0;
    const bool unfinished = std::fclose(std::exchange(file_, nullptr)) != 0;
    if (bad || unfinished) fail(ierr_internal, "Cannot write dump file <" + name_ + "> (dump)");
  }

 private:
  std::string name_;
  std::FILE* file_;
};

/// One sparse matrix in compressed rows, by arrays with 1-based access.
template <class Index, class Value>
void write_matrix(const std::string& name, int rows, int columns, const Index& start, const Index& column,
                  const Value& value) {
  text_file out(name);
  const decimal_point point;
  std::fprintf(out.handle(), "%%%%MatrixMarket matrix coordinate real general\n%d %d %d\n", rows, columns,
               start[rows + 1] - 1);
  for (int i = 1; i <= rows; ++i)
    for (int j = start[i]; j < start[i + 1]; ++j)
      std::fprintf(out.handle(), "%d %d %.17g\n", i, column[j], value[j]);
  out.close();
}

void write_states(const std::string& name, const level& l) {
  text_file out(name);
  for (int i = 1; i <= l.n; ++i) std::fprintf(out.handle(), "%d %d\n", i, l.icg[i]);
  out.close();
}

}  // namespace

void dump_hierarchy(const hierarchy& h) {
  for (int k = 1; k <= h.levels_created; ++k) {
    const level& l = h(k);
    const std::string base = parm().filnam_dump + std::to_string(k);
    write_matrix(base + ".matrix.mtx", l.n, l.n, l.ia, l.ja, l.a);
    if (k == h.levels_created) continue;
    write_matrix(base + ".interp.mtx", l.n, h(k + 1).n, l.iw, l.jw, l.w);
    write_states(base + ".state", l);
  }
}

}  // namespace tier
