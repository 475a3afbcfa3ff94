#include "platform/flutter/standard_message.h"

#include <array>
#include <cassert>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>
#include <variant>

#include "base/utf8.h"
#include "platform/flutter/flutter_value_reader.h"
#include "platform/flutter/message_walker.h"

namespace norvane {
namespace {

constexpr std::uint64_t kNoContainer = std::numeric_limits<std::uint64_t>::max();

using TrustingWalker = MessageWalker<false>;

/// A walker behind the type byte and the size of the value at `at`.
TrustingWalker behindSize(const std::uint8_t* at, std::size_t& count) {
  TrustingWalker walker(at + 1);
  walker.size(count);
  return walker;
}

}  // namespace

const std::uint8_t* checkedValueEnd(const std::uint8_t* at, const std::uint8_t* end) {
  MessageWalker<true> walker(at, end);
  // Values still to come of the innermost open list or map, and of those around it; a map counts
  // its keys and values.
  std::uint64_t left = 1;
  std::array<std::uint64_t, kMaxNesting> around;
  int depth = 0;
  for (;;) {
    std::uint64_t children = kNoContainer;
    if (!walker.head(children)) return nullptr;
    --left;
    if (children != kNoContainer) {
      if (depth == kMaxNesting) return nullptr;
      around[depth++] = std::exchange(left, children);
    }
    while (left == 0) {
      if (depth == 0) return walker.position();
      left = around[--depth];
    }
  }
}

// Writing

void StandardMessageWriter::raw(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  message_.insert(message_.end(), bytes, bytes + size);
}

void StandardMessageWriter::size(std::size_t count) {
  if (count < kSize16) {
    message_.push_back(static_cast<std::uint8_t>(count));
  } else if (count <= std::numeric_limits<std::uint16_t>::max()) {
    const auto narrow = static_cast<std::uint16_t>(count);
    message_.push_back(kSize16);
    raw(&narrow, sizeof narrow);
  } else if (count <= std::numeric_limits<std::uint32_t>::max()) {
    const auto wide = static_cast<std::uint32_t>(count);
    message_.push_back(kSize32);
    raw(&wide, sizeof wide);
  } else {
    throw std::length_error("a message holds at most 2^32 - 1 elements at one place");
  }
}

void StandardMessageWriter::align(std::size_t alignment) {
  message_.resize((message_.size() + alignment - 1) & ~(alignment - 1));
}

void StandardMessageWriter::int32(std::int32_t value) {
  type(FlutterType::int32);
  raw(&value, sizeof value);
}

void StandardMessageWriter::int64(std::int64_t value) {
  type(FlutterType::int64);
  raw(&value, sizeof value);
}

void StandardMessageWriter::float64(double value) {
  type(FlutterType::float64);
  align(sizeof value);
  raw(&value, sizeof value);
}

void StandardMessageWriter::text(std::string_view value) {
  assert(isWellFormedUtf8(value) && "the UI could not decode the message");
  type(FlutterType::text);
  size(value.size());
  raw(value.data(), value.size());
}

void StandardMessageWriter::bytes(std::span<const std::uint8_t> value) {
  type(FlutterType::bytes);
  size(value.size());
  raw(value.data(), value.size());
}

void StandardMessageWriter::list(std::size_t count) {
  type(FlutterType::list);
  size(count);
}

void StandardMessageWriter::map(std::size_t count) {
  type(FlutterType::map);
  size(count);
}

// Empty lists are padded too: the UI's reader expects it, whatever follows.
template <class Element>
void StandardMessageWriter::elements(FlutterType listType, std::span<const Element> values) {
  type(listType);
  size(values.size());
  align(sizeof(Element));
  raw(values.data(), values.size_bytes());
}

void StandardMessageWriter::value(const FlutterValue& value) {
  struct Visitor {
    StandardMessageWriter& out;
    void operator()(std::monostate) { out.null(); }
    void operator()(bool v) { out.boolean(v); }
    void operator()(std::int32_t v) { out.int32(v); }
    void operator()(std::int64_t v) { out.int64(v); }
    void operator()(double v) { out.float64(v); }
    void operator()(const std::string& v) { out.text(v); }
    void operator()(const std::vector<std::uint8_t>& v) { out.bytes(v); }
    void operator()(const std::vector<std::int32_t>& v) {
      out.elements<std::int32_t>(FlutterType::int32List, v);
    }
    void operator()(const std::vector<std::int64_t>& v) {
      out.elements<std::int64_t>(FlutterType::int64List, v);
    }
    void operator()(const std::vector<float>& v) {
      out.elements<float>(FlutterType::float32List, v);
    }
    void operator()(const std::vector<double>& v) {
      out.elements<double>(FlutterType::float64List, v);
    }
    void operator()(const FlutterList& v) {
      out.list(v.size());
      for (const FlutterValue& element : v) out.value(element);
    }
    void operator()(const FlutterMap& v) {
      out.map(v.size());
      for (const auto& [key, mapped] : v) {
        out.value(key);
        out.value(mapped);
      }
    }
  };
  std::visit(Visitor{*this}, value.alternatives());
}

// Reading in place

std::optional<bool> FlutterValueView::boolean() const {
  if (type() == FlutterType::yes) return true;
  if (type() == FlutterType::no) return false;
  return std::nullopt;
}

std::optional<std::int64_t> FlutterValueView::integer() const {
  if (type() == FlutterType::int32) return numberAt<std::int32_t>(at_ + 1);
  if (type() == FlutterType::int64) return numberAt<std::int64_t>(at_ + 1);
  return std::nullopt;
}

std::optional<double> FlutterValueView::float64() const {
  if (type() != FlutterType::float64) return std::nullopt;
  TrustingWalker walker(at_ + 1);
  walker.align(sizeof(double));
  return numberAt<double>(walker.position());
}

std::optional<std::string_view> FlutterValueView::text() const {
  if (type() != FlutterType::text) return std::nullopt;
  std::size_t count = 0;
  const auto* data = behindSize(at_, count).position();
  return std::string_view(reinterpret_cast<const char*>(data), count);
}

template <class Element>
std::optional<std::span<const Element>> FlutterValueView::elements(FlutterType listType) const {
  if (type() != listType) return std::nullopt;
  std::size_t count = 0;
  auto walker = behindSize(at_, count);
  walker.align(sizeof(Element));
  return std::span(reinterpret_cast<const Element*>(walker.position()), count);
}

std::optional<std::span<const std::uint8_t>> FlutterValueView::bytes() const {
  return elements<std::uint8_t>(FlutterType::bytes);
}

std::optional<std::span<const std::int32_t>> FlutterValueView::int32List() const {
  return elements<std::int32_t>(FlutterType::int32List);
}

std::optional<std::span<const std::int64_t>> FlutterValueView::int64List() const {
  return elements<std::int64_t>(FlutterType::int64List);
}

std::optional<std::span<const float>> FlutterValueView::float32List() const {
  return elements<float>(FlutterType::float32List);
}

std::optional<std::span<const double>> FlutterValueView::float64List() const {
  return elements<double>(FlutterType::float64List);
}

std::optional<FlutterListView> FlutterValueView::list() const {
  if (type() != FlutterType::list) return std::nullopt;
  std::size_t count = 0;
  const auto* first = behindSize(at_, count).position();
  return FlutterListView(FlutterValueView(first), count);
}

std::optional<FlutterMapView> FlutterValueView::map() const {
  if (type() != FlutterType::map) return std::nullopt;
  std::size_t count = 0;
  const auto* first = behindSize(at_, count).position();
  return FlutterMapView(FlutterValueView(first), count);
}

std::optional<FlutterMapView> FlutterValueView::textKeyedMap() const {
  auto entries = map();
  if (!entries) return std::nullopt;
  for (const auto& entry : *entries) {
    if (entry.key.type() != FlutterType::text) return std::nullopt;
  }
  return entries;
}

void FlutterValueReader::skip() {
  TrustingWalker walker(at_);
  for (std::uint64_t left = 1; left > 0; --left) {
    std::uint64_t children = 0;
    walker.head(children);
    left += children;
  }
  at_ = walker.position();
}

FlutterValueView FlutterValueView::next() const {
  FlutterValueReader reader(*this);
  reader.skip();
  return reader.here();
}

FlutterListView::Iterator& FlutterListView::Iterator::operator++() {
  // Behind the last element there may be nothing of the message left to look at.
  if (--left_ > 0) at_ = at_.next();
  return *this;
}

FlutterMapView::Iterator::Iterator(FlutterValueView key, std::size_t left) : left_(left) {
  if (left_ > 0) entry_ = {key, key.next()};
}

FlutterMapView::Iterator& FlutterMapView::Iterator::operator++() {
  if (--left_ > 0) {
    const FlutterValueView key = entry_.value.next();
    entry_ = {key, key.next()};
  }
  return *this;
}

FlutterValueView FlutterMapView::operator[](std::string_view key) const {
  for (const Entry& entry : *this) {
    if (entry.key.text() == key) return entry.value;
  }
  return {};
}

}  // namespace norvane
