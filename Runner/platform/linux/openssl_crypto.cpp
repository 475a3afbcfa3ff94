#include "platform/linux/openssl_crypto.h"

#include <algorithm>
#include <memory>
#include <mutex>

#include <openssl/evp.h>
#include <openssl/rand.h>

#include "platform/linux/lazy_library.h"

namespace norvane {
namespace {

// errSecInternalComponent of the home system; any status but 0 is a failure.
constexpr std::int32_t kRandomFailed = -2070;
// EVP counts in int.
constexpr std::size_t kLongestUpdate = 1 << 30;

/// The functions of libcrypto that are used.
struct LibCrypto {
  decltype(&::RAND_bytes) randBytes = nullptr;
  decltype(&::EVP_CIPHER_CTX_new) contextNew = nullptr;
  decltype(&::EVP_CIPHER_CTX_free) contextFree = nullptr;
  decltype(&::EVP_aes_256_gcm) aes256Gcm = nullptr;
  decltype(&::EVP_EncryptInit_ex) encryptInit = nullptr;
  decltype(&::EVP_EncryptUpdate) encryptUpdate = nullptr;
  decltype(&::EVP_EncryptFinal_ex) encryptFinal = nullptr;
  decltype(&::EVP_CIPHER_CTX_ctrl) contextControl = nullptr;

  /// Null when the library cannot be had. It is looked for again the next time: memory or
  /// descriptors may have been short.
  static const LibCrypto* get() {
    static std::mutex mutex;
    static LibCrypto library;
    static bool loaded = false;
    const std::lock_guard lock(mutex);
    if (!loaded) loaded = library.load();
    return loaded ? &library : nullptr;
  }

 private:
  bool load() {
    const LazyLibrary library("libcrypto.so.3");
    return library.find(randBytes, "RAND_bytes") &&
           library.find(contextNew, "EVP_CIPHER_CTX_new") &&
           library.find(contextFree, "EVP_CIPHER_CTX_free") &&
           library.find(aes256Gcm, "EVP_aes_256_gcm") &&
           library.find(encryptInit, "EVP_EncryptInit_ex") &&
           library.find(encryptUpdate, "EVP_EncryptUpdate") &&
           library.find(encryptFinal, "EVP_EncryptFinal_ex") &&
           library.find(contextControl, "EVP_CIPHER_CTX_ctrl");
  }
};

}  // namespace

std::int32_t OpenSslCrypto::SecRandomCopyBytes(std::span<std::uint8_t> bytes) {
  const LibCrypto* const library = LibCrypto::get();
  if (!library) return kRandomFailed;
  return library->randBytes(bytes.data(), static_cast<int>(bytes.size())) == 1 ? 0 : kRandomFailed;
}

bool OpenSslCrypto::sealAESGCM(std::span<const std::uint8_t, 32> key, std::span<std::uint8_t> box) {
  const LibCrypto* const library = LibCrypto::get();
  const auto nonce = box.first(kAesGcmNonceSize);
  auto text = box.subspan(kAesGcmNonceSize, box.size() - kAesGcmNonceSize - kAesGcmTagSize);
  const auto tag = box.last(kAesGcmTagSize);
  if (!library || SecRandomCopyBytes(nonce) != 0) return false;

  // Freeing the context wipes the key schedule that it holds.
  const std::unique_ptr<EVP_CIPHER_CTX, decltype(&::EVP_CIPHER_CTX_free)> context(
      library->contextNew(), library->contextFree);
  if (!context || library->encryptInit(context.get(), library->aes256Gcm(), nullptr, key.data(),
                                       nonce.data()) != 1) {
    return false;
  }
  int written = 0;
  while (!text.empty()) {
    const std::size_t step = std::min(text.size(), kLongestUpdate);
    if (library->encryptUpdate(context.get(), text.data(), &written, text.data(),
                               static_cast<int>(step)) != 1) {
      return false;
    }
    text = text.subspan(step);
  }
  return library->encryptFinal(context.get(), tag.data(), &written) == 1 &&
         library->contextControl(context.get(), EVP_CTRL_GCM_GET_TAG, kAesGcmTagSize, tag.data()) ==
             1;
}

}  // namespace norvane
