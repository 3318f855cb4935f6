#pragma once

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/yaml.h>

#include <sstream>
#include <string>

namespace zemblar::test {

/// Writes down what a reader of YAML tells, with places, tags and styles.
struct YamlEvents : YAML::EventHandler {
  std::string text;

  void OnDocumentStart(const YAML::Mark& mark) override { tell("document", mark); }
  void OnDocumentEnd() override { text += "end of document\n"; }
  void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    tell("null", mark, {}, anchor);
  }
  void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    tell("alias", mark, {}, anchor);
  }
  void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                const std::string& value) override {
    tell("scalar <" + value + ">", mark, tag, anchor);
  }
  void OnSequenceStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value style) override {
    tell(style == YAML::EmitterStyle::Flow ? "flow sequence" : "sequence", mark, tag, anchor);
  }
  void OnSequenceEnd() override { text += "end\n"; }
  void OnMapStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value style) override {
    tell(style == YAML::EmitterStyle::Flow ? "flow map" : "map", mark, tag, anchor);
  }
  void OnMapEnd() override { text += "end\n"; }

  /// What the library tells of the first document; with its error at the end if there is one.
  static std::string by_the_library(const std::string& yaml) {
    YamlEvents events;
    std::istringstream stream(yaml);
    try {
      YAML::Parser(stream).HandleNextDocument(events);
    } catch (const YAML::Exception& error) {
      events.text += error.what();
    }
    return events.text;
  }

 private:
  void tell(const std::string& what, const YAML::Mark& mark, const std::string& tag = {},
            YAML::anchor_t anchor = 0) {
    std::ostringstream line;
    line << what << " tag " << tag << " anchor " << anchor << " at " << mark.pos << ' ' << mark.line
         << ':' << mark.column << '\n';
    text += line.str();
  }
};

}  // namespace zemblar::test
