// Asks a person for a file: the toolkit's dialog, of which older versions have another than newer ones.
#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>

namespace velto::preview {

class FileDialog {
 public:
  using Chosen = std::function<void(const std::string& path)>;
  FileDialog(GtkWindow* parent, Chosen chosen);
  ~FileDialog();  // a dialog that is open goes, and nothing is chosen
  FileDialog(const FileDialog&) = delete;
  FileDialog& operator=(const FileDialog&) = delete;

  void show(
      const std::string& beside);  // in the folder of that file, if it is one; nothing while one is open

 private:
  struct Question;
  GtkWindow* parent_;
  std::shared_ptr<Question> question_;
};

}  // namespace velto::preview
