// What the library keeps between calls stands in a context; a thread uses one at a time, the default one
// until it asks for another. The modules declare their share as a per_context object; no other state outlives
// a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace tier {

/// Counts of words in use, nisum and ndsum, their peaks, and a hook for tests that makes an allocation fail.
struct memory_counters {
  std::int64_t nisum = 0, ndsum = 0;  // integers and doubles in use
  std::int64_t memi = 0, memd = 0;    // peak values
  std::int64_t allocations = 0;       // made so far
  std::int64_t fail_at = -1;          // the allocation of this number fails; -1: none
};

/// The shares of all modules, each made when it is first asked for.
class context {
 public:
  context() = default;
  context(const context&) = delete;
  context& operator=(const context&) = delete;

  template <class T>
  T& share(std::size_t place) {
    if (place < shares_.size() && shares_[place]) return *static_cast<T*>(shares_[place].get());
    return make_share<T>(place);
  }

  int number = 0;
  memory_counters memory;  // outlives the shares, whose arrays are counted when they go

 private:
  template <class T>
  T& make_share(std::size_t place) {
    if (place >= shares_.size()) shares_.resize(place + 1);
    const std::shared_ptr<T> made = std::make_shared<T>();
    shares_[place] = made;
    return *made;
  }

  std::vector<std::shared_ptr<void>> shares_;  // by place; knows how each is destroyed
};

/// The context of this thread. The threads of a team that the library starts itself don't have the caller's:
/// what a parallel region needs of it is read before.
context& here();

/// A place for the next per_context object.
std::size_t new_share();

/// A module's state, one T in each context: `state()` is that of the calling thread's context.
template <class T>
class per_context {
 public:
  T& operator()() const { return here().share<T>(place_); }

 private:
  std::size_t place_ = new_share();
};

inline memory_counters& memory() { return here().memory; }

/// Makes a context and returns its number, from 1.
int create_context();

/// The calling thread uses context `number` from now on, 0: the default one. False where there is none.
bool use_context(int number);

/// Number of the context that the calling thread uses.
int context_in_use();

/// Ends a context: it goes when the last thread that uses it turns to another or ends. False where there is
/// none; the default one stays.
bool destroy_context(int number);

}  // namespace tier
