#pragma once

#include <string>

namespace norvane {

/// The files that the AutoFill extension reads, in the application group's container. Any thread.
/// Locations are paths; the file need not exist, but looking it up makes its directory. Besides the
/// errors named, those of the file system pass through.
struct AppGroupSnapshot {
  /// Raises AppGroupSnapshotError::containerUnavailable.
  static std::string containerURL();
  /// The location of a file of the container's support directory.
  static std::string supportFileURL(const std::string& name);
  /// Removes such a file; a missing one is success.
  static void deleteSupportFile(const std::string& name);
  static std::string snapshotURL();
  static void deleteSnapshot();
};

}  // namespace norvane
