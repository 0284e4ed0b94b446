// The two dialogs.
#include "preview/FileDialog.h"

#include <filesystem>

namespace velto::preview {
namespace {

constexpr char dialogTitle[] = "Play a creative";

GFile* folderOf(const std::string& path) {
  std::error_code none;
  if (!std::filesystem::is_regular_file(path, none)) return nullptr;
  return g_file_new_for_path(std::filesystem::absolute(path, none).parent_path().c_str());
}

}  // namespace

#if GTK_CHECK_VERSION(4, 10, 0)

struct FileDialog::Question {
  Chosen chosen;
  GCancellable* open = nullptr;

  static void answered(GObject* dialog, GAsyncResult* result, gpointer data) noexcept {
    const std::unique_ptr<std::weak_ptr<Question>> weak(static_cast<std::weak_ptr<Question>*>(data));
    GFile* file = gtk_file_dialog_open_finish(GTK_FILE_DIALOG(dialog), result, nullptr);
    char* path = file ? g_file_get_path(file) : nullptr;
    g_clear_object(&file);
    const std::string name = path ? path : "";
    g_free(path);
    const auto question = weak->lock();
    if (!question) return;
    g_clear_object(&question->open);
    if (!name.empty()) question->chosen(name);
  }
};

FileDialog::~FileDialog() {
  GCancellable* open = question_->open;
  question_->open = nullptr;
  question_.reset();
  if (open) g_cancellable_cancel(open);
  g_clear_object(&open);
}

void FileDialog::show(const std::string& beside) {
  if (question_->open) return;
  question_->open = g_cancellable_new();
  GtkFileDialog* dialog = gtk_file_dialog_new();
  gtk_file_dialog_set_title(dialog, dialogTitle);
  GFile* folder = folderOf(beside);
  gtk_file_dialog_set_initial_folder(dialog, folder);
  g_clear_object(&folder);
  gtk_file_dialog_open(dialog, parent_, question_->open, Question::answered, new std::weak_ptr(question_));
  g_object_unref(dialog);
}

#else

struct FileDialog::Question {
  Chosen chosen;
  GtkFileChooserNative* open = nullptr;

  static void answered(GtkNativeDialog* dialog, int answer, Question* question) noexcept {
    GFile* file =
        answer == GTK_RESPONSE_ACCEPT ? gtk_file_chooser_get_file(GTK_FILE_CHOOSER(dialog)) : nullptr;
    char* path = file ? g_file_get_path(file) : nullptr;
    g_clear_object(&file);
    const std::string name = path ? path : "";
    g_free(path);
    g_clear_object(&question->open);
    if (!name.empty()) question->chosen(name);
  }
};

FileDialog::~FileDialog() {
  g_clear_object(&question_->open);
}

void FileDialog::show(const std::string& beside) {
  if (question_->open) return;
  question_->open =
      gtk_file_chooser_native_new(dialogTitle, parent_, GTK_FILE_CHOOSER_ACTION_OPEN, "_Play", "_Cancel");
  if (GFile* folder = folderOf(beside)) {
    gtk_file_chooser_set_current_folder(GTK_FILE_CHOOSER(question_->open), folder, nullptr);
    g_object_unref(folder);
  }
  g_signal_connect(question_->open, "response", G_CALLBACK(Question::answered), question_.get());
  gtk_native_dialog_show(GTK_NATIVE_DIALOG(question_->open));
}

#endif

FileDialog::FileDialog(GtkWindow* parent, Chosen chosen)
    : parent_(parent), question_(std::make_shared<Question>(Question{.chosen = std::move(chosen)})) {}

}  // namespace velto::preview
