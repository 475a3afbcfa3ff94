#pragma once

#include <deque>
#include <memory>
#include <utility>

#include "base/unique_function.h"
#include "platform/dispatch.h"

namespace norvane {

/// Has calls that take several steps, each waiting for somebody's answer, take place one after
/// another in their order.
class Turns : public std::enable_shared_from_this<Turns> {
 public:
  /// Held by the call whose turn it is. When nobody holds it any more, on whatever thread, the next
  /// call begins.
  class Turn {
   public:
    explicit Turn(std::shared_ptr<Turns> turns) : turns_(std::move(turns)) {}
    ~Turn() { turns_->end(); }
    Turn(const Turn&) = delete;

   private:
    const std::shared_ptr<Turns> turns_;
  };
  using Call = UniqueFunction<void(std::shared_ptr<const Turn> turn)>;

  explicit Turns(Dispatch& dispatch) : dispatch_(dispatch) {}

  /// Begins `call` when those before it are over, at once if they are. Main thread, where `call` is
  /// made too.
  void take(Call call);

 private:
  void beginNext();
  void end() noexcept;

  Dispatch& dispatch_;
  std::deque<Call> waiting_;
  std::weak_ptr<const Turn> turn_;
};

}  // namespace norvane
