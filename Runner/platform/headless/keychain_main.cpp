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
#include "platform/linux/version.h"

namespace {

constexpr char kUsage[] = "norvane-keychain --data-dir DIR SERVICE ACCOUNT ACCESS_GROUP";
constexpr char kHelp[] = R"(
Writes the value of one item of the headless keychain to standard output, as the AutoFill extension
would read it. The exit status is 1 where there is no such item, or it cannot be read.

Options:
  --data-dir DIR   The data directory of the host that keeps the item
  --help           Print this help
  --version        Print the version and the commit
)";

}  // namespace

int main(int argc, char** argv) {
  using namespace norvane;
  const std::string_view option(argc > 1 ? argv[1] : "");
  if (argc == 2 && option == "--help") return std::printf("Usage: %s\n%s", kUsage, kHelp) < 0;
  if (argc == 2 && option == "--version") return std::printf("norvane-keychain %s\n", kBuild) < 0;
  if (argc != 6 || option != "--data-dir") {
    std::fprintf(stderr, "usage: %s\n", kUsage);
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
