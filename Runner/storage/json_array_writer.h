#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include "base/secure_memory.h"

namespace norvane {

/// A member of a JSON object: name and text.
using JsonMember = std::pair<std::string_view, std::string_view>;

/// Writes one compact JSON array (RFC 8259) of objects whose values are all texts, in one pass
/// straight into its buffer: no general JSON library came near enough to the speed of the copy that
/// has to be made anyway. Names and texts are UTF-8, and no name needs an escape. Characters beyond
/// ASCII stay as they are.
class JsonArrayWriter {
 public:
  /// Appends to `out`, which must outlive the writer.
  explicit JsonArrayWriter(SecureBuffer& out);

  void object(std::span<const JsonMember> members);
  /// Takes back the objects written so far, and wipes them.
  void discard() { out_.truncate(begin_); }
  void finish() { raw(']'); }

 private:
  void raw(char c);

  SecureBuffer& out_;
  std::size_t begin_;  ///< of the objects
};

}  // namespace norvane
