// The library's own words, and who reads them out.
#include "velto/gtk/Translations.h"
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/views/Peer.h"
#include "velto/platform/ui/UIButton.h"

#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>

#include <fstream>
#include <string>

#include "../support/Folder.h"
#include "../support/Program.h"

namespace velto::gtk {
namespace {

struct Button : UIButton {};

TEST(WordsTest, AreTranslatedWholeAndReadOut) {
  // A German of the test's own: the system need not have one, and newer ones translate nothing in C.UTF-8.
  const test::TemporaryFolder locales;
  ASSERT_EQ(test::run({"localedef", "-i", "de_DE", "-f", "UTF-8", locales.path("de_DE.UTF-8")}).code, 0);
  setenv("LOCPATH", locales.path().c_str(), 1);
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  setenv("VELTO_LOCALE_PATH", LOCALES, 1);
  setenv("GTK_A11Y", "test", 1);  // the toolkit keeps what it would tell a screen reader
  gtk_init();
  install({.applicationIdentifier = "org.example.words"});
  std::ifstream all(TEMPLATE);
  int words = 0;
  for (std::string line; std::getline(all, line);) {
    if (!line.starts_with("msgid \"") || line == "msgid \"\"") continue;
    const std::string text = line.substr(7, line.size() - 8);
    EXPECT_NE(translated(text.c_str()), text) << "has no German";
    ++words;
  }
  EXPECT_GE(words, 5);
  EXPECT_STREQ(translated("unknown"), "unknown");

  const auto isCalled = [](GtkWidget* widget, const char* name) {
    GtkAccessible* accessible = GTK_ACCESSIBLE(widget);
    char* other = gtk_test_accessible_check_property(accessible, GTK_ACCESSIBLE_PROPERTY_LABEL, name);
    EXPECT_STREQ(other, nullptr) << name;
    g_free(other);
  };
  auto* slot = GTK_WIDGET(g_object_ref_sink(adSlot()));
  isCalled(slot, "Werbung");
  g_object_unref(slot);
  const auto button = std::make_shared<Button>();
  auto* widget = dynamic_cast<Peer&>(button->peer()).widget();
  for (const auto& [title, name] :
       {std::pair{"X", "Schließen"}, {"3", "Schließen in 3 Sekunden"}, {"Play", "Abspielen"}}) {
    button->setTitle(title);
    isCalled(widget, name);
  }
  uninstall();
}

}  // namespace
}  // namespace velto::gtk
