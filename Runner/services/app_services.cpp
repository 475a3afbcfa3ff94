#include "services/app_services.h"

#include "platform/ns_application.h"
#include "platform/platform.h"

namespace norvane {

std::shared_ptr<AppServices> AppServices::current() {
  return std::dynamic_pointer_cast<AppServices>(platform().application.delegate());
}

}  // namespace norvane
