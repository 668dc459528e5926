#include "peers.h"

#ifdef LUMRMISC_BENCH_GMIME

#include <gmime/gmime.h>

#include <cstring>
#include <string>

namespace lumr::bench {

Contender GmimeAddressList() {
  return {"GMime", [](std::string_view) -> Operation {
            g_mime_init();
            return [result = std::string()](std::string_view list) mutable -> std::string_view {
              // Whole inputs end in a zero byte.
              InternetAddressList* const found = internet_address_list_parse(nullptr, list.data());
              const int count = internet_address_list_length(found);
              std::size_t addressBytes = 0;
              std::size_t nameBytes = 0;
              for (int i = 0; i < count; ++i) {
                InternetAddress* const entry = internet_address_list_get_address(found, i);
                const char* const name = internet_address_get_name(entry);
                const char* const address =
                    internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(entry));
                addressBytes += std::strlen(address);
                nameBytes += name == nullptr ? 0 : std::strlen(name);
              }
              g_object_unref(found);
              result = std::to_string(count) + " " + std::to_string(addressBytes) + " " +
                       std::to_string(nameBytes);
              return result;
            };
          }};
}

Contender GmimeDate() {
  return {"GMime", [](std::string_view) -> Operation {
            g_mime_init();
            return [result = std::string()](std::string_view text) mutable -> std::string_view {
              char terminated[64] = {};
              std::memcpy(terminated, text.data(), text.size());
              GDateTime* const date = g_mime_utils_header_decode_date(terminated);
              const gint64 zone = g_date_time_get_utc_offset(date) / 60'000'000;
              result = std::to_string(g_date_time_to_unix(date) + zone);
              g_date_time_unref(date);
              return result;
            };
          }};
}

}  // namespace lumr::bench

#else

namespace lumr::bench {
Contender GmimeAddressList() {
  return NotBuilt("GMime");
}
Contender GmimeDate() {
  return NotBuilt("GMime");
}
}  // namespace lumr::bench

#endif
