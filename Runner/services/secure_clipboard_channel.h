#pragma once

#include "platform/flutter/flutter_method_channel.h"

namespace norvane {

/// Serves "cn.kestrio.norvane.secure_clipboard": puts a text on the pasteboard, marked so that
/// clipboard histories neither show nor keep it. Main thread.
void handleSecureClipboard(const FlutterMethodCall& call, FlutterResult result);

}  // namespace norvane
