// A seeded archive of Japanese mail, and the race of `lumr show` through it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include "corpus.h"

namespace lumr::bench {

// One message with CR LF line ends: ISO-2022-JP, UTF-8 in Base64 or in quoted-printable, text
// with an HTML alternative, or text with an attachment.
std::string MakeMessage(Random& random);

// Writes count messages into a maildir at directory, which is created.
void MakeMaildir(const std::filesystem::path& directory, std::size_t count);

// Makes a maildir in a temporary folder, runs both programs over it several times in turn with
// their output thrown away, and prints the times and their ratio. False when lumr takes longer.
bool CompareShow(const std::string& lumr, const std::string& gmimeShow, std::size_t count);

}  // namespace lumr::bench
