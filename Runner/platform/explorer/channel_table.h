#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace norvane {

struct MethodInfo {
  std::string name;
  std::string about;      ///< one or two sentences
  std::string example;    ///< arguments, as JSON for people; empty when it takes none
  bool isHosts = false;   ///< the host calls it; else the UI does
  bool isSecret = false;  ///< its arguments carry what the person keeps secret
};

struct ChannelInfo {
  std::string name;
  std::string engine;  ///< whose UI speaks on it
  std::string about;
  std::vector<MethodInfo> methods;
};

/// Every channel of the host with its methods, in the order in which they are opened: what
/// channels.json has.
const std::vector<ChannelInfo>& channelTable();

/// Null for a method that the table does not have.
const MethodInfo* methodInfo(std::string_view channel, std::string_view method);

/// The channel without what most channels' names begin with.
std::string_view shortName(std::string_view channel);

}  // namespace norvane
