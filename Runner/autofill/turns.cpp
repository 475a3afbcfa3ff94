#include "autofill/turns.h"

#include <cstddef>
#include <utility>

namespace norvane {

void Turns::take(Call call) {
  if (waiting_.empty() && turn_.expired()) {
    call(newTurn());
  } else {
    waiting_.push_back(std::move(call));
    beginNext();
  }
}

Turns::Turn Turns::newTurn() {
  // Let go by the end itself: `turn_` keeps this closure.
  Turn turn(nullptr, [self = shared_from_this()](std::nullptr_t) mutable {
    std::exchange(self, nullptr)->end();
  });
  turn_ = turn;
  return turn;
}

void Turns::beginNext() {
  if (waiting_.empty() || !turn_.expired()) return;
  Turn turn = newTurn();
  Call call = std::move(waiting_.front());
  waiting_.pop_front();
  call(std::move(turn));
}

void Turns::end() noexcept {
  try {
    dispatch_.mainAsync([self = shared_from_this()] { self->beginNext(); });
  } catch (...) {
    // There is no memory. The next call begins those that wait.
  }
}

}  // namespace norvane
