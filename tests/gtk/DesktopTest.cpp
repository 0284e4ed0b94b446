// What the desktop does for an ad. Pictures in the user's folder: only real ones, only when allowed, never over
// another file; which URLs its applications open.
#include "velto/gtk/VeltoGtk.h"
#include "velto/gtk/media/Photos.h"
#include "velto/platform/Platform.h"
#include "velto/platform/UIApplication.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <set>

#include "../support/Folder.h"
#include "BusMock.h"

namespace velto {
namespace {

std::string image(const char* format, int size = 4) {
  const auto pixels = GPtr<GdkPixbuf>::adopt(gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, size, size));
  gdk_pixbuf_fill(pixels, 0x336699ff);
  char* bytes = nullptr;
  gsize count = 0;
  gdk_pixbuf_save_to_buffer(pixels, &bytes, &count, format, nullptr, nullptr);
  const GText owner(bytes);
  return {bytes, count};
}

// Runs in with-display, so home is a folder of the test's own.
TEST(PicturesTest, OnlyPicturesAreStoredAndOnlyWhenAllowed) {
  gtk::install({.applicationIdentifier = "org.example.pictures"});
  const auto folder = std::filesystem::path(g_get_home_dir()) / "Pictures";
  const auto store = [](const std::string& bytes, const char* address) {
    std::optional<bool> outcome;
    Platform::current().photoLibrary().UIImageWriteToSavedPhotosAlbum(
        bytes, address, [&](bool written) { outcome = written; });
    EXPECT_TRUE(test::runUntil([&] { return outcome.has_value(); }));
    return outcome.value_or(false);
  };
  const auto png = image("png"), jpeg = image("jpeg");
  EXPECT_FALSE(store(png, "https://a.example/not-yet.png"));
  gtk::setPicturesAccess(gtk::Access::Denied);
  EXPECT_EQ(Platform::current().photoLibrary().authorizationStatus(), 2);
  EXPECT_FALSE(store(png, "https://a.example/denied.png"));
  EXPECT_FALSE(std::filesystem::exists(folder));

  gtk::setPicturesAccess(gtk::Access::Allowed);
  EXPECT_TRUE(store(png, "https://a.example/pictures/coupon.png?size=1"));
  EXPECT_TRUE(store(jpeg, "https://a.example/coupon.png")) << "it is none: the extension tells";
  EXPECT_TRUE(store(image("png", 8), "https://b.example/coupon.png"));
  EXPECT_TRUE(store(png, "https://a.example/%2e%2e%2F%2e%2e%2F.bashrc"));
  // One transparent pixel on a screen of 4 by 4; the same on one of 20,000 by 10,000 fits in memory and on no wall.
  using namespace std::string_literals;
  const auto dot = "GIF89a\4\0\4\0\x80\0\0\0\0\0\xff\xff\xff,\0\0\0\0\1\0\1\0\0\2\2\x44\1\0;"s;
  EXPECT_TRUE(store(dot, "https://a.example/dot.gif"));
  const auto vast = dot.substr(0, 6) + "\x20\x4e\x10\x27" + dot.substr(10);
  for (const std::string& bytes :
       {std::string(), vast, std::string("<html>no</html>"), png.substr(0, png.size() / 2),
        std::string("<svg xmlns='http://www.w3.org/2000/svg' width='4' height='4'/>")})
    EXPECT_FALSE(store(bytes, "https://a.example/bad.png")) << bytes.substr(0, 8);
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  EXPECT_EQ(names,
            (std::set<std::string>{"coupon.png", "coupon.jpg", "coupon (1).png", "_2F.._2F.png", "dot.gif"}));
  EXPECT_EQ(test::textOf(folder / "coupon.png"), png) << "as it came, and not overwritten";
  gtk::uninstall();
}

TEST(PicturesTest, NamesAreHarmless) {
  const std::string umlauts = "https://a.example/" + std::string(120, 'x') + "\u00e4.png";
  const std::vector<std::pair<std::string, std::string>> names{
      {"", "picture.png"},
      {"https://a.example/..", "picture.png"},
      {"https://a.example/a%00b.png", "a_00b.png"},
      {"https://a.example/a:b*c%22.gif", "a_b_c_.png"},
      {"https://a.example/.hidden.png", "hidden.png"},
      {umlauts, std::string(100, 'x') + ".png"}};
  for (const auto& [address, name] : names) EXPECT_EQ(gtk::pictureName(address, "png"), name) << address;
}

// Runs in with-display, so nothing is installed but what this puts there.
TEST(OpenURLTest, OnlyWhatSomeApplicationOpensCanBeOpened) {
  const auto applications = std::filesystem::path(g_get_user_data_dir()) / "applications";
  gtk::install({.applicationIdentifier = "org.example.open"});
  auto& application = Platform::current().application();
  const auto tel = *NSURL::URLWithString("TEL:+491234"), sms = *NSURL::URLWithString("sms:+491234");
  EXPECT_FALSE(application.canOpenURL(tel));

  std::filesystem::create_directories(applications);
  std::ofstream(applications / "dialer.desktop")
      << "[Desktop Entry]\nType=Application\nName=Dialer\nExec=true %u\nMimeType=x-scheme-handler/tel;\n";
  std::ofstream(applications / "mimeinfo.cache") << "[MIME Cache]\nx-scheme-handler/tel=dialer.desktop;\n";
  EXPECT_TRUE(test::runUntil([&] { return application.canOpenURL(tel); })) << "noticed when it is installed";
  EXPECT_FALSE(application.canOpenURL(sms));

  std::optional<bool> telOpened, smsOpened;
  application.openURL(tel, {}, [&](bool success) { telOpened = success; });
  application.openURL(sms, {}, [&](bool success) { smsOpened = success; });
  EXPECT_TRUE(test::runUntil([&] { return telOpened && smsOpened; }));
  EXPECT_EQ(telOpened, true);
  EXPECT_EQ(smsOpened, false);
  gtk::uninstall();
}

}  // namespace
}  // namespace velto
