// norvane-keychain: reads one item of the headless keychain, as the AutoFill extension would, for
// development and tests.

#include <cstdio>
#include <exception>
#include <string_view>

#include <unistd.h>

#include "platform/headless/keychain_directory.h"
#include "platform/linux/atomic_file.h"
#include "platform/linux/command_line.h"
#include "platform/linux/process.h"

int main(int argc, char** argv) {
  using namespace norvane;
  if (argc != 6 || std::string_view(argv[1]) != "--data-dir") {
    std::fputs("usage: norvane-keychain --data-dir DIR SERVICE ACCOUNT ACCESS_GROUP\n", stderr);
    return kExitUsage;
  }
  disableCoreDumps();
  try {
    const KeychainQuery query{argv[3], argv[4], argv[5]};
    const auto items = KeychainDirectory(argv[2]).find(&query);
    if (items.empty()) return 1;
    return writeAll(STDOUT_FILENO, textOf(items.front().value)) ? 1 : 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "norvane-keychain: %s\n", error.what());
    return 1;
  }
}
