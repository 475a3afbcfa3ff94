// Which application is in front, and which run.

#include <string>

#include "contract.h"
#include "worlds.h"

namespace norvane {
namespace {

template <class Session>
class WorkspaceContract : public testing::Test {};
TYPED_TEST_SUITE(WorkspaceContract, WorkspaceWorlds);

TYPED_TEST(WorkspaceContract, TellsWhatIsKnownOfTheApplicationInFront) {
  TypeParam session;
  const NSWorkspace& workspace = session.workspace();
  EXPECT_EQ(front(workspace), "none");
  session.open({.bundleIdentifier = "org.example.editor", .name = "Editor", .icon = true});
  EXPECT_EQ(front(workspace), "org.example.editor Editor");
  EXPECT_EQ(middleOfIcon(workspace) & 0xFF, 0xFFU) << "nothing was painted";
  session.open({.name = "Tool"});
  EXPECT_EQ(front(workspace), "- Tool");
  session.openOwn();
  EXPECT_EQ(front(workspace), kOwn + std::string(" Norvane"));
  EXPECT_TRUE(runs(workspace, "org.example.editor") && runs(workspace, kOwn));
  EXPECT_FALSE(runs(workspace, kAskedFor));
}

}  // namespace
}  // namespace norvane
