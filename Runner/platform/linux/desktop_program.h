#pragma once

namespace norvane {

/// Goes on as the program that lies beside this one and has the libraries of the real desktop, with
/// the same arguments. Returns only when that cannot be, after saying why, with the exit status.
int becomeDesktopProgram(char** argv);

}  // namespace norvane
