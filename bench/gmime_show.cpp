// gmime_show MAILDIR: the plain way through an archive, for `lumr show` to be measured against.
// Parses every message with GMime and writes its text parts to standard output as UTF-8.
#include <fcntl.h>
#include <gmime/gmime.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace {

void WriteTextPart(GMimePart* part, GMimeStream* out) {
  GMimeDataWrapper* const content = g_mime_part_get_content(part);
  if (content == nullptr) return;
  const char* charset = g_mime_object_get_content_type_parameter(GMIME_OBJECT(part), "charset");
  if (charset == nullptr) charset = "us-ascii";
  GMimeStream* const filtered = g_mime_stream_filter_new(out);
  GMimeFilter* const convert = g_mime_filter_charset_new(charset, "utf-8");
  if (convert != nullptr) {
    g_mime_stream_filter_add(GMIME_STREAM_FILTER(filtered), convert);
    g_object_unref(convert);
  }
  g_mime_data_wrapper_write_to_stream(content, filtered);
  g_mime_stream_flush(filtered);
  g_object_unref(filtered);
}

void VisitPart(GMimeObject*, GMimeObject* part, gpointer out) {
  if (GMIME_IS_TEXT_PART(part)) WriteTextPart(GMIME_PART(part), static_cast<GMimeStream*>(out));
}

bool ShowMessage(const char* path, GMimeStream* out) {
  const int file = open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return false;
  GMimeStream* const stream = g_mime_stream_fs_new(file);  // closes the file in the end
  GMimeParser* const parser = g_mime_parser_new_with_stream(stream);
  GMimeMessage* const message = g_mime_parser_construct_message(parser, nullptr);
  g_object_unref(parser);
  g_object_unref(stream);
  if (message == nullptr) return false;
  g_mime_message_foreach(message, &VisitPart, out);
  g_object_unref(message);
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fputs("usage: gmime_show MAILDIR\n", stderr);
    return 2;
  }
  g_mime_init();
  GMimeStream* const raw = g_mime_stream_pipe_new(STDOUT_FILENO);
  GMimeStream* const out = g_mime_stream_buffer_new(raw, GMIME_STREAM_BUFFER_BLOCK_WRITE);
  bool allRead = true;
  for (const char* folder : {"cur", "new"}) {
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(
             std::filesystem::path(arguments[1]) / folder, ignored)) {
      allRead = ShowMessage(entry.path().c_str(), out) && allRead;
    }
  }
  g_mime_stream_flush(out);
  g_object_unref(out);
  g_object_unref(raw);
  g_mime_shutdown();
  return allRead ? 0 : 1;
}
