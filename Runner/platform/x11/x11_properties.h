#pragma once

#include <string>
#include <vector>

namespace norvane {

using XWindow = unsigned long;

/// While it lives, requests on the toolkit's display that fail are forgiven: windows of other
/// applications may vanish between two requests. Main thread.
class XErrorsForgiven {
 public:
  XErrorsForgiven();
  XErrorsForgiven(const XErrorsForgiven&) = delete;
  ~XErrorsForgiven();
};

/// Has the changes of the root window's properties come as events to this application.
void hearOfRootProperties();

// Properties of `window`, empty when it is gone or has none of that name and format. Errors must be
// forgiven around them.

/// The first `most` numbers.
std::vector<unsigned long> xNumbers(XWindow window, const char* property, long most);
/// The first number, or 0.
unsigned long xNumber(XWindow window, const char* property);
/// Whether the property lists the atom of this name.
bool xHasAtom(XWindow window, const char* property, const char* atom);
/// Up to 4 KiB.
std::string xText(XWindow window, const char* property);

}  // namespace norvane
