#include "core/document_reader.h"

#include <yaml-cpp/eventhandler.h>

#include <istream>
#include <streambuf>
#include <utility>

#include "core/node_builder.h"
#include "core/plain_yaml.h"

namespace zemblar {
namespace {

/// A stream buffer that reads the bytes without copying them.
class ByteBuffer : public std::streambuf {
 public:
  explicit ByteBuffer(std::string_view bytes) {
    auto* begin = const_cast<char*>(bytes.data());  // the buffer is only read
    setg(begin, begin, begin + bytes.size());
  }
};

class DocumentReader : public YAML::EventHandler {
 public:
  DocumentReader(std::size_t size, const DocumentParts& parts) : parts_(parts), builder_(size) {}

  void OnDocumentStart(const YAML::Mark& /*mark*/) override {}
  void OnDocumentEnd() override {}

  void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    builder_.add_null(mark, anchor);
    hand_out();
  }
  void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    builder_.add_alias(mark, anchor);
    hand_out();
  }
  void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                const std::string& value) override {
    builder_.add_scalar(mark, tag, anchor, value);
    hand_out();
  }
  void OnSequenceStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value /*style*/) override {
    if (enters_objects(anchor)) {
      place_ = Place::objects;
    } else {
      builder_.start(YAML::NodeType::Sequence, mark, tag, anchor);
    }
    is_root_ = false;
  }
  void OnSequenceEnd() override { leave(Place::root_map); }
  void OnMapStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value /*style*/) override {
    if (std::exchange(is_root_, false)) {
      place_ = Place::root_map;
    } else {
      builder_.start(YAML::NodeType::Map, mark, tag, anchor);
    }
  }
  void OnMapEnd() override { leave(Place::outside); }

 private:
  enum class Place { outside, root_map, objects };
  enum class Key { none, title, objects, other };

  // A list with an anchor is built as a whole, because aliases may name it.
  [[nodiscard]] bool enters_objects(YAML::anchor_t anchor) const {
    return !builder_.is_inside() && place_ == Place::root_map && key_ == Key::objects &&
           anchor == YAML::NullAnchor;
  }

  void leave(Place outer) {
    if (builder_.is_inside()) {
      builder_.end();
      hand_out();
    } else {
      place_ = outer;
      key_ = Key::none;
    }
  }

  void hand_out() {
    if (!builder_.is_complete()) return;
    const auto node = builder_.take();
    if (place_ == Place::objects) {
      parts_.entry(node);
    } else if (place_ == Place::root_map && key_ == Key::none) {
      key_ = key_of(node);
    } else if (place_ == Place::root_map) {
      take_value(std::exchange(key_, Key::none), node);
    }
  }

  // When a key occurs twice, the first one counts.
  Key key_of(const YAML::Node& node) {
    if (!node.IsScalar()) return Key::other;
    if (node.Scalar() == "title" && !std::exchange(has_title_, true)) return Key::title;
    if (node.Scalar() == "objects" && !std::exchange(has_objects_, true)) return Key::objects;
    return Key::other;
  }

  void take_value(Key key, const YAML::Node& value) {
    if (key == Key::title) parts_.title(value);
    if (key != Key::objects || value.IsNull()) return;
    if (!value.IsSequence()) throw YAML::InvalidNode("objects");
    for (const auto& entry : value) parts_.entry(entry);
  }

  const DocumentParts& parts_;
  NodeBuilder builder_;
  bool is_root_ = true;
  Place place_ = Place::outside;
  Key key_ = Key::none;
  bool has_title_ = false;
  bool has_objects_ = false;
};

}  // namespace

bool read_document(std::string_view bytes, const DocumentParts& parts) {
  DocumentReader reader(bytes.size(), parts);
  if (read_plain_yaml(bytes, reader)) return true;
  ByteBuffer buffer(bytes);
  std::istream stream(&buffer);
  YAML::Parser parser(stream);
  return parser.HandleNextDocument(reader);
}

}  // namespace zemblar
