#pragma once

#include <deque>
#include <memory>

#include "platform/dispatch.h"
#include "platform/unique_function.h"

namespace norvane {

/// Has calls that take several steps, each waiting for somebody's answer, take place one after
/// another in their order.
class Turns : public std::enable_shared_from_this<Turns> {
 public:
  /// Held by what has the turn. When it is gone, on whatever thread, the next call begins: one that
  /// is never answered holds up nobody once its completion has been let go.
  using Turn = std::shared_ptr<const void>;
  using Call = UniqueFunction<void(Turn turn)>;

  explicit Turns(Dispatch& dispatch) : dispatch_(dispatch) {}

  /// Begins `call` when those before it are over, at once if they are. Main thread, where `call` is
  /// made too.
  void take(Call call);

 private:
  Turn newTurn();
  void beginNext();
  void end() noexcept;

  Dispatch& dispatch_;
  std::deque<Call> waiting_;
  std::weak_ptr<const void> turn_;
};

}  // namespace norvane
