#pragma once

#include <concepts>
#include <memory>
#include <utility>

namespace norvane {

template <class Signature>
class UniqueFunction;

/// A callable that is moved, never copied, so that a closure may own what exists once: a reply, a
/// message with secrets. Empty when default constructed; calling an empty one is undefined.
template <class R, class... Args>
class UniqueFunction<R(Args...)> {
 public:
  UniqueFunction() = default;

  template <std::invocable<Args...> F>
  requires(!std::same_as<std::remove_cvref_t<F>, UniqueFunction>)
      UniqueFunction(F&& callable)  // implicit, so that a lambda can be passed as it stands
      : callable_(std::make_unique<Holder<std::decay_t<F>>>(std::forward<F>(callable))) {}

  explicit operator bool() const { return callable_ != nullptr; }
  R operator()(Args... args) { return callable_->call(std::forward<Args>(args)...); }

 private:
  struct Callable {
    virtual ~Callable() = default;
    virtual R call(Args... args) = 0;
  };
  template <class F>
  struct Holder final : Callable {
    explicit Holder(F&& f) : function(std::move(f)) {}
    explicit Holder(const F& f) : function(f) {}
    R call(Args... args) override { return function(std::forward<Args>(args)...); }
    F function;
  };

  std::unique_ptr<Callable> callable_;
};

/// One piece of work for a queue.
using Task = UniqueFunction<void()>;

}  // namespace norvane
