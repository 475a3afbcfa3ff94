#include "platform/session/key_codes.h"

#include <iterator>

namespace norvane {
namespace {

// In the order of the virtual key codes. The gap is a key that only ISO keyboards have.
constexpr PhysicalKey kKeys[] = {
    {"AC01", "a"},
    {"AC02", "s"},
    {"AC03", "d"},
    {"AC04", "f"},
    {"AC06", "h"},
    {"AC05", "g"},
    {"AB01", "z"},
    {"AB02", "x"},
    {"AB03", "c"},
    {"AB04", "v"},
    {"", ""},
    {"AB05", "b"},
    {"AD01", "q"},
    {"AD02", "w"},
    {"AD03", "e"},
    {"AD04", "r"},
    {"AD06", "y"},
    {"AD05", "t"},
    {"AE01", "1"},
    {"AE02", "2"},
    {"AE03", "3"},
    {"AE04", "4"},
    {"AE06", "6"},
    {"AE05", "5"},
    {"AE12", "equal"},
    {"AE09", "9"},
    {"AE07", "7"},
    {"AE11", "minus"},
    {"AE08", "8"},
    {"AE10", "0"},
    {"AD12", "bracketright"},
    {"AD09", "o"},
    {"AD07", "u"},
    {"AD11", "bracketleft"},
    {"AD08", "i"},
    {"AD10", "p"},
    {"RTRN", "Return"},
    {"AC09", "l"},
    {"AC07", "j"},
    {"AC11", "apostrophe"},
    {"AC08", "k"},
    {"AC10", "semicolon"},
    {"BKSL", "backslash"},
    {"AB08", "comma"},
    {"AB10", "slash"},
    {"AB06", "n"},
    {"AB07", "m"},
    {"AB09", "period"},
    {"TAB", "Tab"},
    {"SPCE", "space"},
    {"TLDE", "grave"},
};

}  // namespace

const PhysicalKey* physicalKey(std::uint32_t virtualKeyCode) {
  if (virtualKeyCode >= std::size(kKeys) || kKeys[virtualKeyCode].place.empty()) return nullptr;
  return &kKeys[virtualKeyCode];
}

}  // namespace norvane
