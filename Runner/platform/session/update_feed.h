#pragma once

#include <optional>
#include <stop_token>
#include <string>

namespace norvane {

/// What a look at the feed came to.
struct UpdateFinding {
  enum class Kind {
    newer,    ///< `version` can be had at `url`
    current,  ///< there is nothing newer
    unknown,  ///< the feed could not be read or is not one; `reason` says why
    noFeed,   ///< none is configured
  };
  Kind kind = Kind::noFeed;
  std::string version;
  std::string url;     ///< the download page; always https
  std::string reason;  ///< for the person
};

/// Reads the feed at `feed` and compares it with the version that is running. Nothing is downloaded
/// but the feed. It is {"version": "1.2.3", "url": "https://..."}: numbers between dots, and the
/// page where that version can be had. Taken from https, from a file: address, or by http from this
/// machine itself. Blocks for half a minute at most, and ends at once on `stop`. Any thread.
UpdateFinding lookForUpdate(const std::optional<std::string>& feed, const std::string& version,
                            const std::stop_token& stop);

}  // namespace norvane
