// See Certificates.h.
#include "sandbox/Certificates.h"

#include <fcntl.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>

#include "sandbox/Server.h"

namespace velto::sandbox {

namespace {

constexpr time_t kDay = 86400;
constexpr const char* kLoopbackAddresses[] = {"127.0.0.1", "::1"};

struct FileCloser {
  void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, FileCloser>;

template <typename T>
T require(T result, const char* step) {
  if (!result) throw Error(std::string("certificates: ") + step + " failed");
  return result;
}

void addExtension(X509* certificate, X509* issuer, int id, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension =
      require(X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str()), "making an extension");
  X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

void setRandomSerial(X509* certificate) {
  unsigned char bytes[16];
  require(RAND_bytes(bytes, sizeof bytes) == 1, "drawing a serial number");
  bytes[0] = static_cast<unsigned char>((bytes[0] & 0x7F) | 0x40);  // positive, and of full length
  BIGNUM* number = require(BN_bin2bn(bytes, sizeof bytes, nullptr), "making a serial number");
  BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate));
  BN_free(number);
}

Identity readIdentity(const std::string& certificateFile, const std::string& keyFile) {
  Identity identity;
  if (const File file{fopen(certificateFile.c_str(), "r")}) {
    identity.certificate.reset(PEM_read_X509(file.get(), nullptr, nullptr, nullptr));
  }
  if (const File file{fopen(keyFile.c_str(), "r")}) {
    identity.key.reset(PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr));
  }
  return identity;
}

bool isUsable(const Identity& identity) {
  if (!identity.certificate || !identity.key) return false;
  time_t now = std::time(nullptr);
  time_t tomorrow = now + kDay;
  return X509_check_private_key(identity.certificate.get(), identity.key.get()) == 1 &&
         X509_cmp_time(X509_get0_notBefore(identity.certificate.get()), &now) < 0 &&
         X509_cmp_time(X509_get0_notAfter(identity.certificate.get()), &tomorrow) > 0;
}

bool covers(const Identity& server, const Identity& authority, const std::vector<std::string>& dnsNames) {
  if (X509_verify(server.certificate.get(), authority.key.get()) != 1) return false;
  for (const std::string& name : dnsNames) {
    // A wildcard is asked about through a name it stands for.
    const std::string probe = name.starts_with("*.") ? "probe" + name.substr(1) : name;
    if (X509_check_host(server.certificate.get(), probe.c_str(), probe.size(), 0, nullptr) != 1) return false;
  }
  for (const char* address : kLoopbackAddresses) {
    if (X509_check_ip_asc(server.certificate.get(), address, 0) != 1) return false;
  }
  return true;
}

// Writes a file at once, by renaming, so that a reader never sees half of it.
template <typename Write>
void writeFile(const std::string& path, mode_t mode, Write write) {
  const std::string unfinished = path + ".new";
  (void)unlink(unfinished.c_str());
  const int descriptor = open(unfinished.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (descriptor < 0) throw Error(path + ": " + std::strerror(errno));
  File file{fdopen(descriptor, "w")};
  const bool written = write(file.get()) == 1 && fflush(file.get()) == 0;
  if (!written || rename(unfinished.c_str(), path.c_str()) != 0) throw Error(path + ": cannot be written");
}

void writeIdentity(const Identity& identity, const std::string& certificateFile, const std::string& keyFile) {
  writeFile(keyFile, 0600, [&](FILE* file) {
    return PEM_write_PKCS8PrivateKey(file, identity.key.get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
  writeFile(certificateFile, 0644,
            [&](FILE* file) { return PEM_write_X509(file, identity.certificate.get()); });
}

// Holds the folder's lock file while certificates are read or made.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder) {
    const std::string path = folder + "/lock";
    descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor_ < 0) throw Error(path + ": " + std::strerror(errno));
    while (flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  ~FolderLock() { close(descriptor_); }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int descriptor_ = -1;
};

}  // namespace

Identity makeIdentity(const CertificateWish& wish, const Identity* issuer) {
  Identity identity;
  identity.key.reset(require(EVP_EC_gen("P-256"), "making a key"));
  identity.certificate.reset(require(X509_new(), "making a certificate"));
  X509* certificate = identity.certificate.get();
  X509* issuerCertificate = issuer ? issuer->certificate.get() : certificate;
  X509_set_version(certificate, X509_VERSION_3);
  setRandomSerial(certificate);
  X509_gmtime_adj(X509_getm_notBefore(certificate), wish.validFromDays * kDay);
  X509_gmtime_adj(X509_getm_notAfter(certificate), wish.validToDays * kDay);
  X509_set_pubkey(certificate, identity.key.get());
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8,
                             reinterpret_cast<const unsigned char*>(wish.commonName.c_str()), -1, -1, 0);
  X509_set_issuer_name(certificate, X509_get_subject_name(issuerCertificate));

  addExtension(certificate, issuerCertificate, NID_subject_key_identifier, "hash");
  addExtension(certificate, issuerCertificate, NID_basic_constraints,
               wish.authority ? "critical,CA:TRUE,pathlen:0" : "critical,CA:FALSE");
  addExtension(certificate, issuerCertificate, NID_key_usage,
               wish.authority ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature");
  if (!wish.authority) {
    addExtension(certificate, issuerCertificate, NID_authority_key_identifier, "keyid");
    addExtension(certificate, issuerCertificate, NID_ext_key_usage, "serverAuth");
    std::string names;
    for (const std::string& name : wish.dnsNames) names += (names.empty() ? "DNS:" : ",DNS:") + name;
    for (const std::string& address : wish.addresses) names += (names.empty() ? "IP:" : ",IP:") + address;
    addExtension(certificate, issuerCertificate, NID_subject_alt_name, names);
  }
  EVP_PKEY* signer = issuer ? issuer->key.get() : identity.key.get();
  require(X509_sign(certificate, signer, EVP_sha256()) > 0, "signing");
  return identity;
}

Certificates loadOrMakeCertificates(const std::string& folder, const std::vector<std::string>& dnsNames) {
  std::error_code fault;
  std::filesystem::create_directories(folder, fault);
  if (fault) throw Error(folder + ": " + fault.message());
  const FolderLock lock(folder);

  Certificates certificates;
  certificates.caFile = (std::filesystem::absolute(folder) / "ca.pem").string();
  const std::string caKey = folder + "/ca.key";
  certificates.authority = readIdentity(certificates.caFile, caKey);
  if (!isUsable(certificates.authority)) {
    certificates.authority = makeIdentity(
        {.commonName = "Velto sandbox authority", .validToDays = 3650, .authority = true}, nullptr);
    writeIdentity(certificates.authority, certificates.caFile, caKey);
  }
  const std::string serverFile = folder + "/server.pem";
  const std::string serverKey = folder + "/server.key";
  certificates.server = readIdentity(serverFile, serverKey);
  if (!isUsable(certificates.server) || !covers(certificates.server, certificates.authority, dnsNames)) {
    certificates.server =
        makeIdentity({.commonName = "Velto sandbox",
                      .dnsNames = dnsNames,
                      .addresses = {std::begin(kLoopbackAddresses), std::end(kLoopbackAddresses)}},
                     &certificates.authority);
    writeIdentity(certificates.server, serverFile, serverKey);
  }
  return certificates;
}

}  // namespace velto::sandbox
