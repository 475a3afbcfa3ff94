#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>

namespace norvane {

class FlutterListView;
class FlutterMapView;

/// The type bytes of the standard message codec.
enum class FlutterType : std::uint8_t {
  null = 0x00,
  yes = 0x01,
  no = 0x02,
  int32 = 0x03,
  int64 = 0x04,
  float64 = 0x06,
  text = 0x07,
  bytes = 0x08,
  int32List = 0x09,
  int64List = 0x0a,
  float64List = 0x0b,
  list = 0x0c,
  map = 0x0d,
  float32List = 0x0e,
};

/// One value of a received message, looked at in place: nothing is copied, and the view is valid
/// for as long as the message's bytes are. Only a message that was checked as a whole has views, so
/// nothing here can fail; reading a value as another type gives nothing. A view that was default
/// constructed reads as null.
class FlutterValueView {
 public:
  FlutterValueView() = default;
  /// `at` is the value's type byte inside a checked message, whose first byte is aligned to 8
  /// bytes.
  explicit FlutterValueView(const std::uint8_t* at) : at_(at) {}

  FlutterType type() const { return at_ ? static_cast<FlutterType>(*at_) : FlutterType::null; }
  std::optional<bool> boolean() const;
  /// Integers of both widths.
  std::optional<std::int64_t> integer() const;
  std::optional<double> float64() const;
  std::optional<std::string_view> text() const;
  std::optional<std::span<const std::uint8_t>> bytes() const;
  std::optional<std::span<const std::int32_t>> int32List() const;
  std::optional<std::span<const std::int64_t>> int64List() const;
  std::optional<std::span<const float>> float32List() const;
  std::optional<std::span<const double>> float64List() const;
  std::optional<FlutterListView> list() const;
  std::optional<FlutterMapView> map() const;
  /// A map whose keys are all texts.
  std::optional<FlutterMapView> textKeyedMap() const;

 private:
  friend class FlutterListView;
  friend class FlutterMapView;
  friend class FlutterValueReader;

  /// The value that stands behind this one in the message.
  FlutterValueView next() const;
  template <class Element>
  std::optional<std::span<const Element>> elements(FlutterType type) const;

  const std::uint8_t* at_ = nullptr;
};

/// The elements of a list, front to back.
class FlutterListView {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = FlutterValueView;
    using difference_type = std::ptrdiff_t;
    using pointer = const FlutterValueView*;
    using reference = FlutterValueView;

    Iterator(FlutterValueView at, std::size_t left) : at_(at), left_(left) {}
    FlutterValueView operator*() const { return at_; }
    Iterator& operator++();
    bool operator==(const Iterator& other) const { return left_ == other.left_; }

   private:
    FlutterValueView at_;
    std::size_t left_;
  };

  FlutterListView(FlutterValueView first, std::size_t count) : first_(first), count_(count) {}

  std::size_t size() const { return count_; }
  /// To be read on from; not a value when the list is empty.
  FlutterValueView first() const { return first_; }
  Iterator begin() const { return {first_, count_}; }
  Iterator end() const { return {{}, 0}; }

 private:
  FlutterValueView first_;
  std::size_t count_;
};

/// The entries of a map, in the order of the message.
class FlutterMapView {
 public:
  struct Entry {
    FlutterValueView key;
    FlutterValueView value;
  };
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = const Entry*;
    using reference = const Entry&;

    Iterator(FlutterValueView key, std::size_t left);
    const Entry& operator*() const { return entry_; }
    const Entry* operator->() const { return &entry_; }
    Iterator& operator++();
    bool operator==(const Iterator& other) const { return left_ == other.left_; }

   private:
    Entry entry_;
    std::size_t left_;
  };

  FlutterMapView(FlutterValueView firstKey, std::size_t count)
      : firstKey_(firstKey), count_(count) {}

  std::size_t size() const { return count_; }
  Iterator begin() const { return {firstKey_, count_}; }
  Iterator end() const { return {{}, 0}; }

  /// The value under the text `key`, of several the first, as the UI toolkit's embedding on the
  /// home system takes it; null when there is none.
  FlutterValueView operator[](std::string_view key) const;

 private:
  FlutterValueView firstKey_;
  std::size_t count_;
};

}  // namespace norvane
