#pragma once

namespace norvane {

extern const char kVersion[];  ///< as in "0.1.0"
extern const char kBuild[];    ///< with the commit too, where it is known: "0.1.0 (abc1234)"

}  // namespace norvane
