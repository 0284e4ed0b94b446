// Which creatives a batch plays.
#include <glib.h>
#include <velto/platform/foundation/Text.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string_view>
#include <tuple>

#include "preview/Batch.h"

namespace velto::preview {
namespace {

namespace fs = std::filesystem;

constexpr char indexPage[] = "index.html";

bool isPage(const fs::path& file) {
  const auto extension = file.extension().string();
  return g_ascii_strcasecmp(extension.c_str(), ".html") == 0 ||
         g_ascii_strcasecmp(extension.c_str(), ".htm") == 0;
}

// Beside creatives there are other files of that name. What stands before the root is no more than that, as a rule.
bool isVideoAdFile(const fs::path& file) {
  std::error_code none;
  if (g_ascii_strcasecmp(file.extension().c_str(), ".xml") != 0 || !fs::is_regular_file(file, none))
    return false;
  constexpr size_t beginning = 65'536;
  std::string bytes(beginning, '\0');
  std::ifstream in(file, std::ios::binary);
  in.read(bytes.data(), beginning);
  bytes.resize(static_cast<size_t>(in.gcount()));
  return lowercased(bytes).find("<vast") != std::string::npos;
}

bool isLink(const std::string& text) {
  return text.rfind("http://", 0) == 0 || text.rfind("https://", 0) == 0;
}

// "ad.steps"; of a document "ad.xml.steps", since the other are those of a page "ad.html" where there is one. Empty: none.
std::string stepsOf(const fs::path& creative, bool isVideoAd) {
  std::error_code none;
  const auto other = [&](const char* extension) { return fs::path(creative).replace_extension(extension); };
  if (isVideoAd) {
    auto own = creative.string() + ".steps";
    if (fs::is_regular_file(own, none)) return own;
    if (fs::exists(other(".html"), none) || fs::exists(other(".htm"), none)) return {};
  }
  return fs::is_regular_file(other(".steps"), none) ? other(".steps").string() : std::string();
}

// The label is what the name is made of.
void add(std::vector<BatchItem>& items, const std::string& creative, const std::string& label,
         std::vector<std::string> options, bool isVideoAd = false) {
  if (const auto steps = isLink(creative) ? std::string() : stepsOf(creative, isVideoAd); !steps.empty())
    options.insert(options.begin(), "--steps=" + steps);
  items.push_back({creative, label, std::move(options), isVideoAd});
}

void addFolder(std::vector<BatchItem>& items, const fs::path& root, const fs::path& folder) {
  if (const auto index = folder / indexPage; fs::is_regular_file(index))
    return add(items, index.string(), index.lexically_relative(root).string(), {});
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.is_directory() && !entry.is_symlink())
      addFolder(items, root, entry.path());
    else if (entry.is_regular_file() && isPage(entry.path()))
      add(items, entry.path().string(), entry.path().lexically_relative(root).string(), {});
    else if (entry.is_regular_file() && isVideoAdFile(entry.path()))
      add(items, entry.path().string(), entry.path().lexically_relative(root).string(), {}, true);
  }
}

// A creative a line, or --vast and a document, and behind it the options that are its own, in the words of a shell.
void addList(std::vector<BatchItem>& items, const fs::path& list) {
  std::ifstream in(list);
  if (!in) throw UsageError(list.string() + ": cannot be read");
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (const auto first = line.find_first_not_of(" \t\r"); first == std::string::npos || line[first] == '#')
      continue;
    char** words = nullptr;
    GError* error = nullptr;
    if (!g_shell_parse_argv(line.c_str(), nullptr, &words, &error)) {
      const std::string reason = error->message;
      g_error_free(error);
      throw UsageError(list.string() + ":" + std::to_string(number) + ": " + reason);
    }
    const bool isVideoAd = std::string_view(words[0]) == "--vast" && words[1];
    char** word = words + (isVideoAd ? 1 : 0);
    const std::string creative = *word;
    std::vector<std::string> options;
    for (++word; *word; ++word) options.emplace_back(*word);
    g_strfreev(words);
    add(items, isLink(creative) ? creative : (list.parent_path() / creative).lexically_normal().string(),
        creative, std::move(options), isVideoAd);
  }
}

// A name for a folder: what is no letter, digit, point or underscore is a hyphen.
std::string nameOf(const std::string& label) {
  std::string name = label;
  for (char& c : name)
    if (!g_ascii_isalnum(c) && c != '.' && c != '_') c = '-';
  name.erase(0, name.find_first_not_of(".-"));
  constexpr size_t longest = 120;
  if (name.size() > longest) name.erase(0, name.size() - longest);  // the end of a path says most
  return name.empty() ? "creative" : name;
}

void nameAll(std::vector<BatchItem>& items) {
  std::sort(items.begin(), items.end(), [](const BatchItem& a, const BatchItem& b) {
    return std::tie(a.name, a.options, a.creative) < std::tie(b.name, b.options, b.creative);
  });
  std::set<std::string> taken{indexPage, "findings.json", "junit.xml"};  // the report has these itself
  for (auto& item : items) {
    const auto name = item.name = nameOf(item.name);
    for (int use = 2; !taken.insert(item.name).second; ++use) item.name = name + "-" + std::to_string(use);
  }
  std::sort(items.begin(), items.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
}

}  // namespace

std::vector<BatchItem> batchOf(const Arguments& arguments) {
  std::vector<BatchItem> items;
  for (const auto& path : arguments.all) {
    std::error_code none;
    if (!fs::is_directory(path, none)) {
      if (const bool isPageFile = isPage(path);
          (isPageFile && fs::is_regular_file(path, none)) || isVideoAdFile(path))
        add(items, path, path, {}, !isPageFile);
      else
        addList(items, path);
      continue;
    }
    try {
      addFolder(items, path, path);
    } catch (const fs::filesystem_error& error) {
      throw UsageError(error.what());
    }
  }
  const auto& videoAds = arguments.videoAds;
  for (const auto& creative : arguments.creatives)
    add(items, creative, creative, {}, std::ranges::find(videoAds, creative) != videoAds.end());
  if (items.empty()) throw UsageError("there is no creative in " + arguments.all.front());
  nameAll(items);
  std::vector<BatchItem> part;
  for (size_t i = static_cast<size_t>(arguments.shard.number) - 1; i < items.size();
       i += static_cast<size_t>(arguments.shard.count))
    part.push_back(items[i]);
  return part;
}

}  // namespace velto::preview
