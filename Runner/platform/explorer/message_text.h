#pragma once

#include <cstddef>
#include <string>

#include "platform/flutter/standard_method_codec.h"
#include "platform/linux/json.h"

namespace norvane {

// Messages as people read them: JSON as on the console.

/// On several lines where it has several members.
std::string jsonForPeople(const JsonValue& value);
/// The same of a message's value; cut where it gets long, saying so.
std::string jsonForPeople(FlutterValueView value);
/// On one line, and cut for a list.
std::string jsonInShort(FlutterValueView value);

/// "map", "text", "null" and so on.
const char* typeName(FlutterValueView value);

/// What kind of reply it is, in a few words: "success, map".
std::string kindOf(const FlutterReply& reply);
/// What it says: the value, or code and message of an error; empty when not implemented.
std::string contentOf(const FlutterReply& reply);

}  // namespace norvane
