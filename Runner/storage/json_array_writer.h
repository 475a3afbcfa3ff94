#pragma once

#include <span>
#include <string_view>
#include <utility>

#include "base/secure_memory.h"

namespace norvane {

/// A member of a JSON object: name and text.
using JsonMember = std::pair<std::string_view, std::string_view>;

/// Writes one compact JSON array (RFC 8259) of objects whose values are all texts, in one pass
/// straight into its buffer: no general JSON library came near enough to the speed of the copy that
/// has to be made anyway. Characters beyond ASCII stay as they are. Throws std::invalid_argument
/// for a text that is not UTF-8.
class JsonArrayWriter {
 public:
  /// Appends to `out`, which must outlive the writer.
  explicit JsonArrayWriter(SecureBuffer& out);

  void object(std::span<const JsonMember> members);
  void finish();

 private:
  void raw(char c);

  SecureBuffer& out_;
  bool empty_ = true;
};

}  // namespace norvane
