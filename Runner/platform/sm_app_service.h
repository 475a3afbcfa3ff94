#pragma once

#include <optional>
#include <string>

namespace norvane {

enum class SMAppServiceStatus {
  notRegistered = 0,
  enabled = 1,
  requiresApproval = 2,
  notFound = 3,
};

/// What a login item's operation failed with.
struct ServiceError {
  std::string localizedDescription;  ///< for the user, in UTF-8
  std::string description;           ///< in full, for the log
};

/// The main application as a login item; needs 13.0. Main thread.
class SMAppService {
 public:
  virtual ~SMAppService() = default;

  /// As it is at the call: the person may change it at any time. `notFound` also where it cannot be
  /// read.
  virtual SMAppServiceStatus status() const = 0;
  /// The application starts with the session from now on, also where the person had switched that
  /// off; again is success. Nothing on success.
  virtual std::optional<ServiceError> registerService() = 0;
  /// Takes it back; what was not registered is success. Nothing on success.
  virtual std::optional<ServiceError> unregisterService() = 0;
};

}  // namespace norvane
