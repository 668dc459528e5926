// CBuffer edits against std::string as the model: a script of bytes becomes a sequence of
// operations done on both, compared after each one. For the tests and the fuzzer.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "tests/buffer/reference.h"

namespace lumr::reference {

class BufferModel {
 public:
  explicit BufferModel(std::string_view script) : script_(script) {}

  // Empty, or what went wrong in which operation.
  std::string Run() {
    while (!script_.empty()) {
      const int operation = Byte() % 11;
      const std::string before = model_;
      const bool rightAnswer = Do(operation);
      const std::string fault = rightAnswer ? Fault() : "wrong answer";
      if (!fault.empty())
        return "operation " + std::to_string(operation) + " of '" + before + "': " + fault;
      if (model_.size() < 3000) continue;
      buffer_.Empty();
      model_.clear();
    }
    return {};
  }

 private:
  int Byte() {
    if (script_.empty()) return 0;
    const int byte = static_cast<unsigned char>(script_.front());
    script_.remove_prefix(1);
    return byte;
  }
  std::string Text() {
    std::string text;
    for (int i = Byte() % 20; i > 0; --i) text += "aA1 \r\0\x82\xa0\x83\x41\x81"[Byte() % 11];
    return text;
  }

  // Does one operation on both; false when the buffer's answer is wrong. The source lies outside
  // or inside the buffer, positions also a little outside the content.
  bool Do(int operation) {
    const std::string own = Text();
    const std::size_t size = model_.size();
    const bool inside = size > 0 && Byte() % 2 == 0;
    const std::string_view source =
        inside ? buffer_.Bytes().substr(static_cast<std::size_t>(Byte()) % size, own.size()) : own;
    const std::string bytes(source);
    const int length = static_cast<int>(source.size());
    const int pos = Byte() % (buffer_.GetLength() + 5) - 2;
    const bool within = pos >= 0 && pos <= static_cast<int>(size);
    const std::size_t at = within ? static_cast<std::size_t>(pos) : 0;
    const int count = Byte() % 60 - 5;
    const std::size_t number = static_cast<std::size_t>(std::max(count, 0));
    switch (operation) {
      case 0:
        buffer_ += source;
        model_ += bytes;
        return true;
      case 1:
        for (const char c : own) buffer_ += c;
        buffer_ += buffer_;
        model_ += own;
        model_ += std::string(model_);
        return true;
      case 2:
        buffer_.Set(source.data(), length);
        model_ = bytes;
        return true;
      case 3:
        buffer_.AllocFree();
        buffer_.SetIncrSize(count);
        model_.clear();
        return true;
      case 4:
        buffer_.Delete(pos, count);
        if (within) model_.erase(at, number);
        return true;
      case 5:
        buffer_.Insert(source.data(), length, pos);
        if (within) model_.insert(at, bytes);
        return true;
      case 6:
        buffer_.Insert('*', count, pos);
        buffer_.Insert(u'\u2A2A', length, pos);
        if (within) model_.insert(at, std::string(number + 2 * bytes.size(), '*'));
        return true;
      case 7:
        buffer_.Overwrite(source.data(), length, pos);
        if (within && at + bytes.size() <= size) model_.replace(at, bytes.size(), bytes);
        return true;
      case 8:
        buffer_.Mid(pos, count, buffer_);
        model_ = pos <= static_cast<int>(size) ? model_.substr(at, number) : std::string();
        return true;
      case 9:
        buffer_.ExceptNull();
        buffer_.ExceptCrlf();
        std::erase_if(model_, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
        return buffer_.Truncate(buffer_.GetLength() + 1) == 0 &&
               buffer_.Truncate(buffer_.GetLength()) == 1;
      default:
        return Replace(source.data(), pos, count);
    }
  }

  // The strings end at NUL, so one within the buffer runs on to its end.
  bool Replace(const char* from, int start, int count) {
    const TextForm form = Byte() % 2 == 0 ? TextForm::kBytes : TextForm::kCharacters;
    const bool ignoreCase = Byte() % 2 == 0;
    const std::string other = Text();
    const char* const to = Byte() % 3 == 0 ? from : other.c_str();
    int expected = 0;
    if (start >= 0 && start < buffer_.GetLength()) {
      const std::size_t begin = static_cast<std::size_t>(start);
      const std::size_t end = count > 0 ? begin + static_cast<std::size_t>(count) : model_.size();
      model_ = ReplaceAll(form, model_, std::string(from), std::string(to), begin,
                          std::min(end, model_.size()), ignoreCase, expected);
    }
    return expected == (form == TextForm::kBytes
                            ? buffer_.ReplaceAsciiPhraseAll(from, to, start, count, ignoreCase)
                            : buffer_.ReplacePhraseAll(from, to, start, count, ignoreCase));
  }

  std::string Fault() const {
    if (buffer_.Bytes() != model_) return "not '" + model_ + "'";
    if (buffer_.GetBuffer() == nullptr) return buffer_.GetAllocSize() == 0 ? "" : "no storage";
    if (LoadUnit(buffer_.GetBuffer() + buffer_.GetLength()) != 0) return "no terminator pair";
    return buffer_.GetLength() <= buffer_.GetAllocSize() ? "" : "more than the capacity";
  }

  std::string_view script_;
  CBuffer buffer_;
  std::string model_;
};

}  // namespace lumr::reference
