#include "storage/app_group_snapshot.h"

#include "platform/ns_file_manager.h"
#include "platform/platform.h"
#include "storage/storage_errors.h"

namespace norvane {
namespace {

constexpr const char* kSnapshotName = "snapshot.enc";

}  // namespace

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

void AppGroupSnapshot::deleteSupportFile(const std::string& name) {
  const std::string path = supportFileURL(name);
  if (platform().fileManager.fileExistsAtPath(path)) platform().fileManager.removeItem(path);
}

std::string AppGroupSnapshot::snapshotURL() { return supportFileURL(kSnapshotName); }

void AppGroupSnapshot::deleteSnapshot() { deleteSupportFile(kSnapshotName); }

}  // namespace norvane
