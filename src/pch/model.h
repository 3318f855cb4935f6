// Included ahead of every file of the model's library; its headers are guarded themselves.
#include <giomm/file.h>
#include <glibmm/main.h>
#include <glibmm/object.h>
#include <glibmm/propertyproxy.h>
#include <glibmm/ustring.h>
#include <sigc++/sigc++.h>
#include <yaml-cpp/yaml.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
