#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace norvane {

/// Files and directories, on any thread; paths in the system's encoding. Failures are thrown as
/// std::system_error, whose `what` is the system's own description, in its encoding. What is made
/// is its owner's alone.
class NSFileManager {
 public:
  virtual ~NSFileManager() = default;

  /// Whether anything exists at `path`, symbolic links followed; false where it cannot be looked
  /// at. The empty path names nothing.
  virtual bool fileExistsAtPath(const std::string& path) const = 0;

  /// Makes the directory and those above it that are missing; one that exists is success, anything
  /// else in its place a failure. Those above that were made stay after one.
  virtual void createDirectory(const std::string& path) = 0;

  /// Replaces the file at `path`, in a directory that exists, whole: a reader sees the old content
  /// or the new, never a part, also after a loss of power. A failure leaves the old file and
  /// nothing else. On success the new one is there for good; if its directory could not be synced,
  /// which is logged, until a loss of power.
  virtual void writeAtomically(std::span<const std::uint8_t> data, const std::string& path) = 0;

  /// Removes what is at `path`, as much for good: a directory with its content, a symbolic link and
  /// not what it leads to. Finding nothing there is a failure.
  virtual void removeItem(const std::string& path) = 0;

  /// Where the application group's container lies or is to be made; nothing when the process has no
  /// such group. Makes nothing.
  virtual std::optional<std::string> containerURLForSecurityApplicationGroupIdentifier(
      const std::string& group) = 0;

  /// Where the iCloud container lies or is to be made, in UTF-8, for the UI is told; nothing when
  /// iCloud storage is not available. Makes nothing.
  virtual std::optional<std::string> URLForUbiquityContainerIdentifier(
      const std::string& identifier) = 0;
};

}  // namespace norvane
