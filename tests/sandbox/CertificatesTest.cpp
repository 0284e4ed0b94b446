// The folder of certificates: kept while good, made anew where not.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support.h"
#include "sandbox/Certificates.h"

namespace velto::sandbox {
namespace {

class CertificatesTest : public testing::Test {
 protected:
  // Loads, and says which of the two certificates changed.
  std::string changes(const std::vector<std::string>& names = {"a.example", "*.b.example"}) {
    const std::string ca = read("ca.pem");
    const std::string server = read("server.pem");
    loadOrMakeCertificates(folder_.path(), names);
    return std::string(read("ca.pem") == ca ? "" : "authority ") +
           (read("server.pem") == server ? "" : "server");
  }

  std::string read(const char* name) const { return test::textOf(folder_.path(name)); }

  TemporaryFolder folder_;
};

TEST_F(CertificatesTest, KeepsWhatIsGoodAndReplacesTheRest) {
  EXPECT_EQ(changes(), "authority server");
  EXPECT_EQ(changes(), "");
  for (const char* key : {"ca.key", "server.key"}) {
    struct stat status {};
    ASSERT_EQ(stat(folder_.path(key).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << key;
  }
  EXPECT_EQ(changes({"a.example", "*.c.example"}), "server");
  EXPECT_EQ(changes({"a.example"}), "") << "a certificate for more names is good enough";

  folder_.write("server.key", "damaged");
  EXPECT_EQ(changes(), "server");
  folder_.write("ca.key", read("server.key"));
  EXPECT_EQ(changes(), "authority server");
}

}  // namespace
}  // namespace velto::sandbox
