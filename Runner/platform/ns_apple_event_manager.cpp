#include "platform/ns_apple_event_manager.h"

#include "base/utf8.h"

namespace norvane {

NSAppleEventDescriptor::NSAppleEventDescriptor(std::string text) {
  if (isWellFormedUtf8(text) && text.find('\0') == std::string::npos) text_ = std::move(text);
}

const NSAppleEventDescriptor* NSAppleEventDescriptor::paramDescriptorForKeyword(
    std::uint32_t keyword) const {
  const auto found = parameters_.find(keyword);
  return found == parameters_.end() ? nullptr : &found->second;
}

void NSAppleEventDescriptor::setParamDescriptor(NSAppleEventDescriptor descriptor,
                                                std::uint32_t keyword) {
  parameters_[keyword] = std::move(descriptor);
}

void NSAppleEventManager::setEventHandler(Handler handler, std::uint32_t eventClass,
                                          std::uint32_t eventID) {
  handlers_[{eventClass, eventID}] = std::move(handler);
}

void NSAppleEventManager::dispatchEvent(std::uint32_t eventClass, std::uint32_t eventID,
                                        const NSAppleEventDescriptor& event) {
  const auto found = handlers_.find({eventClass, eventID});
  if (found == handlers_.end()) return;
  const Handler handler = found->second;  // it may be replaced while it runs
  NSAppleEventDescriptor reply;
  handler(event, reply);
}

}  // namespace norvane
