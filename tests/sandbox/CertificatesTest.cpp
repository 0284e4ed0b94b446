// The folder of certificates: kept while good, made anew where not.
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <sys/stat.h>

#include "Support.h"
#include "sandbox/Certificates.h"
#include "sandbox/Scenario.h"

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

  std::string read(const char* name) const {
    return std::filesystem::exists(folder_.path(name)) ? readFile(folder_.path(name)) : "";
  }

  void writeIdentity(const Identity& identity) const {
    FILE* certificate = fopen(folder_.path("server.pem").c_str(), "w");
    PEM_write_X509(certificate, identity.certificate.get());
    fclose(certificate);
    FILE* key = fopen(folder_.path("server.key").c_str(), "w");
    PEM_write_PrivateKey(key, identity.key.get(), nullptr, nullptr, 0, nullptr, nullptr);
    fclose(key);
  }

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

  const Certificates now = loadOrMakeCertificates(folder_.path(), {"a.example"});
  CertificateWish wish{.commonName = "old", .dnsNames = {"a.example"}, .addresses = {"127.0.0.1", "::1"}};
  wish.validFromDays = -9;
  wish.validToDays = -1;
  writeIdentity(makeIdentity(wish, &now.authority));
  EXPECT_EQ(changes({"a.example"}), "server") << "expired";
  wish.validToDays = 9;
  writeIdentity(makeIdentity(wish, &now.authority));
  EXPECT_EQ(changes({"a.example"}), "") << "the same but not expired";
}

TEST_F(CertificatesTest, ReportsAFolderThatCannotBeMade) {
  folder_.write("file", "");
  EXPECT_THROW(loadOrMakeCertificates(folder_.path("file/below"), {"a.example"}), Error);
}

}  // namespace
}  // namespace velto::sandbox
