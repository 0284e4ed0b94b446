// Which URLs the desktop's applications open.
#include "velto/gtk/VeltoGtk.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include "../support/Folder.h"
#include "BusMock.h"

namespace velto {
namespace {

// Runs in with-display.sh, so nothing is installed but what this puts there.
TEST(OpenURLTest, OnlyWhatSomeApplicationOpensCanBeOpened) {
  const auto applications = std::filesystem::path(g_get_user_data_dir()) / "applications";
  const auto opened = std::filesystem::path(g_get_home_dir()) / "opened";
  gtk::install({.applicationIdentifier = "org.example.open"});
  auto& application = Platform::current().application();
  const auto tel = *NSURL::URLWithString("TEL:+491234"), sms = *NSURL::URLWithString("sms:+491234");
  EXPECT_FALSE(application.canOpenURL(tel));

  std::filesystem::create_directories(applications);
  const auto dialer = std::filesystem::path(g_get_home_dir()) / "dialer";
  std::ofstream(dialer) << "#!/bin/sh\nprintf %s \"$1\" >" << opened.string() << ".new && mv "
                        << opened.string() << ".new " << opened.string() << "\n";
  std::filesystem::permissions(dialer, std::filesystem::perms::owner_all);
  std::ofstream(applications / "dialer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Dialer\nExec=" << dialer.string()
      << " %u\nMimeType=x-scheme-handler/tel;\n";
  std::ofstream(applications / "mimeinfo.cache") << "[MIME Cache]\nx-scheme-handler/tel=dialer.desktop;\n";
  EXPECT_TRUE(test::runUntil([&] { return application.canOpenURL(tel); })) << "noticed when it is installed";
  EXPECT_FALSE(application.canOpenURL(sms));

  std::optional<bool> telOpened, smsOpened;
  application.openURL(tel, {}, [&](bool success) { telOpened = success; });
  application.openURL(sms, {}, [&](bool success) { smsOpened = success; });
  EXPECT_TRUE(test::runUntil([&] { return telOpened && smsOpened && std::filesystem::exists(opened); }));
  EXPECT_EQ(test::textOf(opened), "TEL:+491234");
  EXPECT_EQ(telOpened, true);
  EXPECT_EQ(smsOpened, false);
  gtk::uninstall();
}

}  // namespace
}  // namespace velto
