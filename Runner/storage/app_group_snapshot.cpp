#include "storage/app_group_snapshot.h"

#include "platform/ns_file_manager.h"
#include "platform/platform.h"
#include "storage/storage_errors.h"

namespace norvane {

std::string AppGroupSnapshot::containerURL() {
  const auto container = platform().fileManager.containerURLForSecurityApplicationGroupIdentifier(
      "group.cn.kestrio.norvane");
  if (!container) throw StorageFailure(AppGroupSnapshotError::containerUnavailable);
  return *container;
}

std::string AppGroupSnapshot::supportFileURL(const std::string& name) {
  const std::string directory = containerURL() + "/Library/Application Support";
  platform().fileManager.createDirectory(directory);
  return directory + '/' + name;
}

std::string AppGroupSnapshot::snapshotURL() { return supportFileURL("snapshot.enc"); }

void AppGroupSnapshot::deleteSnapshot() {
  const std::string path = snapshotURL();
  if (platform().fileManager.fileExistsAtPath(path)) platform().fileManager.removeItem(path);
}

}  // namespace norvane
