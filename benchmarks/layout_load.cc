// What the layout adds to the YAML library when a file is opened and saved.

#include <glib/gstdio.h>
#include <glibmm/convert.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>
#include <yaml-cpp/yaml.h>

#include <stdexcept>

#include "benchmarks/layout_scene.h"
#include "benchmarks/ratio.h"
#include "core/document_text.h"
#include "core/layout.h"
#include "core/status.h"
#include "simulator/soak/process_memory.h"

namespace zemblar::bench {
namespace {

constexpr std::size_t object_count = 10000;

/// Writes what a layout of `fill_with_loks` writes, without any objects.
std::string emit_loks(const std::vector<std::string>& names) {
  YAML::Emitter out;
  unsigned id = 0;
  out << YAML::BeginMap << YAML::Key << "title" << YAML::Value << "New Layout";
  out << YAML::Key << "objects" << YAML::Value << YAML::BeginSeq;
  for (const auto& name : names) {
    out << YAML::LocalTag("lok") << YAML::BeginMap;
    out << YAML::Key << "name" << YAML::Value << name;
    out << YAML::Key << "id" << YAML::Value << id++;
    out << YAML::Key << "top-speed" << YAML::Value << 100;
    out << YAML::Key << "decoders" << YAML::Value << YAML::BeginSeq << YAML::BeginMap;
    out << YAML::Key << "type" << YAML::Value << "DCC 128";
    out << YAML::Key << "device" << YAML::Value << YAML::Null;
    out << YAML::Key << "address" << YAML::Value << 3;
    out << YAML::Key << "speed" << YAML::Value << "1";
    out << YAML::EndMap << YAML::EndSeq;
    out << YAML::Key << "functions" << YAML::Value << YAML::BeginSeq;
    for (unsigned i = 1; i <= functions_per_lok; ++i) {
      out << YAML::BeginMap;
      out << YAML::Key << "name" << YAML::Value << "Function " + std::to_string(i);
      out << YAML::Key << "id" << YAML::Value << id++;
      out << YAML::Key << "type" << YAML::Value << "Toggle";
      out << YAML::Key << "decoder" << YAML::Value << 0;
      out << YAML::Key << "function" << YAML::Value << 0;
      out << YAML::Key << "on_image" << YAML::Value << YAML::Null;
      out << YAML::Key << "off_image" << YAML::Value << YAML::Null;
      out << YAML::EndMap;
    }
    out << YAML::EndSeq << YAML::EndMap;
  }
  out << YAML::EndSeq;
  return "%YAML 1.2\n" + std::string(out.c_str(), out.size()) + "\n";
}

const Figure opening("layout: open 10,000 objects, to loading the bytes into nodes", "ms", 0.9,
                     [](Effort effort) {
                       fill_with_loks(effort.count(object_count));
                       auto bytes = Layout::get().serialize();
                       return [bytes = std::move(bytes)] {
                         Layout::get().new_document(false);
                         Sample sample;
                         sample.floor = milliseconds([&] { YAML::Load(bytes); });
                         sample.figure = milliseconds([&] { open_or_throw(bytes); });
                         return sample;
                       };
                     });

const Figure opening_memory(
    "layout: most memory to open 10,000 objects, to loading the bytes into nodes", "kB", 0.4,
    [](Effort effort) {
      fill_with_loks(effort.count(object_count));
      auto bytes = Layout::get().serialize();
      return [bytes = std::move(bytes)] {
        Layout::get().new_document(false);
        const auto rise = [](const auto& work) {
          return static_cast<double>(1 + simulator::rise_of_memory(work));
        };
        Sample sample;
        sample.floor = rise([&] { YAML::Load(bytes); });
        sample.figure = rise([&] { open_or_throw(bytes); });
        return sample;
      };
    });

/// A folder of its own for the file that is saved, and gone with the figure.
struct SavedFile {
  SavedFile() { g_mkdtemp(folder.data()); }
  ~SavedFile() {
    g_unlink(path().c_str());
    g_rmdir(folder.c_str());
  }
  std::string path() const { return Glib::build_filename(folder, "bench.zblt"); }
  std::string folder = Glib::build_filename(Glib::get_tmp_dir(), "zemblar-bench-XXXXXX");
};

const Figure saving("layout: save 10,000 objects, to emitting the same events", "ms", 1.5,
                    [](Effort effort) {
                      auto file = std::make_shared<SavedFile>();
                      const auto count = effort.count(object_count);
                      return [file, count] {
                        Layout::get().new_document(false);
                        fill_with_loks(count);
                        open_or_throw(Layout::get().serialize(), file->path());
                        std::vector<std::string> names;
                        for (auto* lok : Layout::get().get_loks()) names.push_back(lok->get_name());
                        std::string emitted;
                        Sample sample;
                        sample.floor = milliseconds([&] { emitted = emit_loks(names); });
                        sample.figure = milliseconds([] { Layout::get().save(); });
                        if (Glib::file_get_contents(file->path()) != emitted) {
                          throw std::logic_error("the floor emits something else");
                        }
                        return sample;
                      };
                    });

const Figure copying("layout: write 10,000 objects for recovery, in parts, to writing their file",
                     "ms", 1.3, [](Effort effort) {
                       fill_with_loks(effort.count(object_count));
                       return [] {
                         Sample sample;
                         sample.floor = milliseconds([] { keep(Layout::get().serialize()); });
                         sample.figure = milliseconds([] { keep(DocumentText::whole()); });
                         return sample;
                       };
                     });

}  // namespace
}  // namespace zemblar::bench
