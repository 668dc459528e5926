#include <gnu/libc-version.h>
#include <iconv.h>

#include <cerrno>
#include <memory>

#include "peers.h"

namespace lumr::bench {
namespace {

constexpr auto kFailed = static_cast<std::size_t>(-1);

class IconvJob {
 public:
  IconvJob(const std::string& from, const std::string& to, std::size_t inputSize)
      : handle_(iconv_open(to.c_str(), from.c_str()), &iconv_close),
        step_(from == "UTF-16LE" ? 2 : 1),
        substitute_(to == "UTF-16LE" ? std::string("?\0", 2) : "?"),
        out_(inputSize * 4 + 64, '\0') {}

  std::string_view operator()(std::string_view input) {
    iconv(handle_.get(), nullptr, nullptr, nullptr, nullptr);
    char* in = const_cast<char*>(input.data());
    std::size_t inLeft = input.size();
    to_ = out_.data();
    outLeft_ = out_.size();
    while (iconv(handle_.get(), &in, &inLeft, &to_, &outLeft_) == kFailed && errno == EILSEQ) {
      if (inLeft < step_) break;
      in += step_;
      inLeft -= step_;
      Write(substitute_);
    }
    iconv(handle_.get(), nullptr, nullptr, &to_, &outLeft_);
    return {out_.data(), out_.size() - outLeft_};
  }

 private:
  void Write(std::string_view bytes) {
    if (outLeft_ < bytes.size()) return;
    to_ += bytes.copy(to_, bytes.size());
    outLeft_ -= bytes.size();
  }

  std::shared_ptr<void> handle_;
  std::size_t step_;
  std::string substitute_;
  std::string out_;
  char* to_ = nullptr;
  std::size_t outLeft_ = 0;
};

}  // namespace

Contender Iconv(const std::string& from, const std::string& to) {
  const iconv_t probe = iconv_open(to.c_str(), from.c_str());
  if (probe == reinterpret_cast<iconv_t>(-1)) return NotBuilt("iconv");
  iconv_close(probe);
  return {"iconv", [from, to](std::string_view input) -> Operation {
            return IconvJob(from, to, input.size());
          }};
}

std::vector<std::string> PeerVersions() {
  std::vector<std::string> versions = {std::string("iconv of glibc ") + gnu_get_libc_version()};
  for (const auto& version :
       {IcuVersion(), NkfVersion(), GmimeVersion(), OpensslVersion(), GlibVersion(),
        UchardetVersion(), OnigurumaVersion(), Pcre2Version(), Libxml2Version(), NettleVersion(),
        GcryptVersion(), UnibreakVersion()}) {
    if (!version.empty()) versions.push_back(version);
  }
  return versions;
}

}  // namespace lumr::bench
