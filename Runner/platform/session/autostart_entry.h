#pragma once

#include <string>

#include "platform/sm_app_service.h"

namespace norvane {

/// Launch at login, as the application's entry in the user's XDG autostart folder. The file is the
/// state: a person or a settings program may change it at any time.
class AutostartEntry : public SMAppService {
 public:
  /// `executable`: absolute path of what the session is to start.
  explicit AutostartEntry(std::string executable);

  /// requiresApproval when the entry was switched off in the session's settings; notFound when it
  /// is damaged or starts nothing.
  SMAppServiceStatus status() const override;
  /// Switches an entry on again too, and keeps what else it says.
  std::optional<ServiceError> registerService() override;
  std::optional<ServiceError> unregisterService() override;

 private:
  const std::string executable_;
  const std::string path_;
};

}  // namespace norvane
