// What the host relies on of the keychain and of launch at login.

#include <thread>
#include <vector>

#include "contract.h"
#include "worlds.h"

namespace norvane {
namespace {

using enum SMAppServiceStatus;

template <class World>
class ServicesContract : public testing::Test, public World {};
TYPED_TEST_SUITE(ServicesContract, ServicesWorlds);

TYPED_TEST(ServicesContract, KeychainItemsAreAddedOnceUpdatedInPlaceAndDeletedByGroupOrAll) {
  Keychain& chain = this->keychain;
  EXPECT_EQ(chain.SecItemUpdate(kMine, {kFirst, "a"}), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemDelete(kAny), errSecItemNotFound);
  std::vector<OSStatus> added(2);
  for (std::vector<std::jthread> threads; OSStatus & status : added) {
    threads.emplace_back([&] { status = chain.SecItemAdd(kMine, {kFirst, "a"}, false); });
  }
  EXPECT_EQ(added[0] + added[1], errSecDuplicateItem) << "one of two threads succeeds";
  EXPECT_EQ(chain.SecItemAdd(kAny, {kSecond, "b"}, true), errSecDuplicateItem);
  EXPECT_EQ(chain.SecItemAdd(kOther, {kSecond, "b"}, true), errSecSuccess);
  EXPECT_EQ(chain.SecItemUpdate({kAny.service, "another", {}}, {{}, ""}), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemUpdate(kAny, {kSecond, "c"}), errSecSuccess);
  EXPECT_EQ(chain.SecItemDelete(kMine), errSecSuccess) << "it has kept its group";
  EXPECT_EQ(chain.SecItemDelete(kMine), errSecItemNotFound);
  EXPECT_EQ(chain.SecItemAdd(kMine, {kFirst, "a"}, false), errSecSuccess);
  EXPECT_EQ(chain.SecItemDelete(kAny), errSecSuccess);
  EXPECT_EQ(chain.SecItemDelete(kOther), errSecItemNotFound);
}

TYPED_TEST(ServicesContract, EachStateOfTheLoginItemCanBeAskedForAgain) {
  for (int i = 0; i < 4; ++i) {
    EXPECT_FALSE(this->loginItem.unregisterService());
    EXPECT_EQ(this->loginItem.status(), notRegistered);
    for (int again = 0; again < i; ++again) EXPECT_FALSE(this->loginItem.registerService());
    EXPECT_EQ(this->loginItem.status(), i > 0 ? enabled : notRegistered);
  }
}

}  // namespace
}  // namespace norvane
