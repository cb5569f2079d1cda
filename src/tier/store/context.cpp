// The contexts of the process and the one that each thread uses.
#include "tier/store/context.h"

#include <map>
#include <mutex>

namespace tier {

namespace {

struct registry {
  std::mutex guard;
  std::map<int, std::shared_ptr<context>> contexts;
  int created = 0;
};

registry& all_contexts() {
  static registry all;
  return all;
}

context& default_context() {
  static context of_the_process;
  return of_the_process;
}

thread_local std::shared_ptr<context> chosen;  // null: the default one
thread_local context* current = nullptr;       // what here() gives; another one while a context goes

/// The thread turns to `next`. A context that goes with that is current to the end,
/// since what it frees is counted there.
void turn_to(std::shared_ptr<context> next) {
  chosen.swap(next);
  next.reset();
  current = chosen.get();
}

}  // namespace

context& here() { return current ? *current : default_context(); }

std::size_t new_share() {
  static std::size_t shares = 0;  // counted while the library is loaded
  return shares++;
}

int create_context() {
  registry& all = all_contexts();
  const std::lock_guard lock(all.guard);
  const int number = ++all.created;
  const auto made = std::make_shared<context>();
  made->number = number;
  all.contexts.emplace(number, made);
  return number;
}

bool use_context(int number) {
  std::shared_ptr<context> next;
  if (number != 0) {
    registry& all = all_contexts();
    const std::lock_guard lock(all.guard);
    const auto found = all.contexts.find(number);
    if (found == all.contexts.end()) return false;
    next = found->second;
  }
  turn_to(std::move(next));
  return true;
}

int context_in_use() { return here().number; }

bool destroy_context(int number) {
  std::shared_ptr<context> last;
  {
    registry& all = all_contexts();
    const std::lock_guard lock(all.guard);
    const auto found = all.contexts.find(number);
    if (found == all.contexts.end()) return false;
    last = std::move(found->second);
    all.contexts.erase(found);
  }
  if (last == chosen) turn_to(nullptr);
  context* const former = current;
  current = last.get();
  last.reset();
  current = former;
  return true;
}

}  // namespace tier
