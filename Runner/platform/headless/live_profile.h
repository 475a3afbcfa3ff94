#pragma once

#include <mutex>
#include <utility>

#include "platform/headless/profile.h"

namespace norvane {

/// The profile while the host runs: the person's side changes it, the services look things up in it
/// at each call, on any thread.
class LiveProfile {
 public:
  explicit LiveProfile(Profile profile) : profile_(std::move(profile)) {}

  template <class Member>
  Member get(Member Profile::*member) const {
    const std::lock_guard lock(mutex_);
    return profile_.*member;
  }
  Profile copy() const {
    const std::lock_guard lock(mutex_);
    return profile_;
  }
  template <class Change>
  void change(Change change) {
    const std::lock_guard lock(mutex_);
    change(profile_);
  }

 private:
  mutable std::mutex mutex_;
  Profile profile_;
};

}  // namespace norvane
