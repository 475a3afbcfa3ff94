#pragma once

#include "base/secure_memory.h"
#include "platform/flutter/flutter_value_view.h"
#include "platform/linux/json.h"

namespace norvane {

// Between the console's JSON and the UI's messages. A byte array is {"$bytes": BASE64}; a JSON
// integer is an integer of 32 bits where it fits, else of 64; any other number is a double.

/// The call of `method` as a message; throws JsonError for arguments that no message can carry.
Bytes encodeConsoleCall(std::string_view method, const JsonValue* arguments);

/// Keys that are not texts are written as the JSON of their value.
void writeConsoleValue(JsonWriter& writer, FlutterValueView value);

}  // namespace norvane
