#include "platform/linux/log_line.h"

namespace norvane {

std::string escapedLogLine(std::string_view text) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string line;
  line.reserve(text.size() + 1);
  const auto escape = [&](unsigned char byte) {
    line += "\\x";
    line += kHex[byte >> 4];
    line += kHex[byte & 15];
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto following = text.substr(i, 3);
    if (byte == '\n') {
      line += "\\n";
    } else if (byte == '\r') {
      line += "\\r";
    } else if (byte == '\t') {
      line += "\\t";
    } else if (byte < 0x20 || byte == 0x7F) {
      escape(byte);
    } else if (byte == 0xC2 && following.size() > 1 &&
               static_cast<unsigned char>(following[1]) < 0xA0) {
      escape(byte);
      escape(static_cast<unsigned char>(text[++i]));
    } else if (following == "\u2028" || following == "\u2029") {
      line += following == "\u2028" ? "\\u2028" : "\\u2029";
      i += 2;
    } else {
      line += text[i];
    }
  }
  return line;
}

}  // namespace norvane
