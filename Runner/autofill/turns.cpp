#include "autofill/turns.h"

#include <utility>

namespace norvane {

void Turns::take(Call call) {
  waiting_.push_back(std::move(call));
  beginNext();
}

void Turns::beginNext() {
  if (waiting_.empty() || !turn_.expired()) return;
  Call call = std::move(waiting_.front());
  waiting_.pop_front();
  const auto turn = std::make_shared<const Turn>(shared_from_this());
  turn_ = turn;
  call(turn);
}

void Turns::end() noexcept {
  try {
    dispatch_.mainAsync([self = shared_from_this()] { self->beginNext(); });
  } catch (...) {
    // There is no memory. The next call begins those that wait.
  }
}

}  // namespace norvane
