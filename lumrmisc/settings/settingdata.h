// Settings: named keys (sections) of named values, kept in one file and a reserve copy of it.
//
// Names are compared without regard to case; values exactly. Order is kept. Narrow names and
// values are in the ANSI code page; everything is kept as UTF-16, so that what the code page
// cannot hold goes through unharmed. The file's text is described in sdformat.h; a file made by a
// later version, with keys and entries that this one does not know, is saved back whole.
//
// A folder is given with its trailing separator, as UTF-16, and one is added where it is missing.
// Null pointers are empty texts. Names and values are wiped when they end, pass phrases too. Names
// that would make a file unreadable are refused: keys "DATA-START" and "DATA-END", entries without
// a name, and zero units anywhere, for a zero unit is how the blocks show that never reached the
// disk.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "lumrmisc/buffer/buffer.h"
#include "lumrmisc/platform/types.h"
#include "lumrmisc/settings/sdformat.h"
#include "lumrmisc/settings/sdkey.h"
#include "lumrmisc/settings/sdname.h"

namespace lumr {

class CWnd;

// What to do when settings cannot be saved.
enum IfErrAsk : int {
  kIfErrReturn = 0,               // no question: give 0 and the message
  kIfErrRetryCancel = 1,          // ask: retry, or cancel
  kIfErrRetryContinue = 2,        // ask: retry, or go on without saving
  kIfErrRetryCancelContinue = 3,  // ask: any of the three
};

class CSettingData {
 public:
  CSettingData() = default;
  virtual ~CSettingData();
  CSettingData(const CSettingData&) = delete;
  CSettingData& operator=(const CSettingData&) = delete;

  // ---- Loading and saving

  // Loads dir + name. 1 when the settings are loaded; an object that is loaded already stays as it
  // is. An empty file loads as no settings; a missing one is a failure.
  //
  // With useReserve, when the file is missing, empty or damaged and its reserve copy (in the folder
  // Reserve of dir) is whole, the reserve copy is loaded and written back over the file at once.
  //
  // 0 after a failure: GetErrorMessage tells the first one, the object holds what could be read
  // before it, and it is not loaded.
  int LoadSdFile(const char16_t* dir, const char16_t* name, int useReserve);

  // Saves to dir + name, when something has changed since the last load or save; creates missing
  // folders. Every write is durable (WriteFileDurably): a reader and a crash see the old or the new
  // text. With useReserve, the reserve copy is complete on the disk before the file is touched.
  //
  // 1 when the next load finds the new text: in the file, or, when the file could not be written,
  // in the reserve copy, by which the file is replaced; where that fails too, the file is removed,
  // so that the reserve copy is loaded. The settings still count as changed after that, and where
  // the text is in the file but its folder could not be flushed; the next save tries again.
  // An object whose load failed never replaces a reserve copy.
  //
  // When nothing could be saved the file is as it was (DurableFile tells where that cannot be; the
  // message then names the file with the new text), and ask decides: the user is asked by
  // parent's message box, or by the host's where parent is null (SetMessageBoxHandler). Without a
  // host to ask, with kIfErrReturn and when the user cancels the result is 0 and errorText (may be
  // null) gets the message. Who goes on without saving is asked again, with ignorePrompt or a text
  // of the library, and with allowTempSave the settings are saved to the temporary folder and the
  // user is told where. The result is then 1.
  int SaveSdFile(const char16_t* dir, const char16_t* name, int useReserve, IfErrAsk ask,
                 int allowTempSave, const char* ignorePrompt, CStringA* errorText, CWnd* parent);

  // The same text from and to memory, enciphered like the file. Loading an object that is loaded
  // gives 1 and changes nothing; saving does not clear the modified flag.
  int LoadSdText(std::string_view bytes);
  void SaveSdText(CBuffer& bytes) const;

  void LoadNone();  // nothing to load: counts as loaded, without content
  void InitSD();    // as a new object, apart from the encipherment
  void RemoveKeyAll();

  // Enciphers files with a pass phrase from now on (crypto/blowfish.h says what that is worth), or
  // no longer. An empty key enciphers nothing.
  void SetCryptKey(int enable, const char* key);
  void SetCryptKey(const CSettingData& other);

  int IsLoaded() const { return loaded_; }
  int IsModified() const { return modified_; }
  int IsRecovered() const { return recovered_; }  // loaded from the reserve copy
  const CStringA& GetErrorMessage() const { return errorMessage_; }
  // Keys and names that stood twice in what was loaded last, and where a failed load stopped.
  const SdTextReading& GetReading() const { return reading_; }

  // ---- Reading. 1 when the entry exists and reads as that type; otherwise 0, and the output is
  // left as it was.

  int GetValue(const SdName& key, const SdName& name, int& value) const;
  int GetValue(const SdName& key, const SdName& name, std::uint32_t& value) const;
  int GetValue(const SdName& key, const SdName& name, long long& value) const;
  int GetValue(const SdName& key, const SdName& name, CStringA& value) const;
  int GetValue(const SdName& key, const SdName& name, CStringW& value) const;
  int GetValue(const SdName& key, const SdName& name, CBuffer& value) const;  // narrow text
  int GetValue(const SdName& key, const SdName& name, CRect& value) const;
  int GetValue(const SdName& key, const SdName& name, CStringArray& value) const;
  int GetValue(const SdName& key, const SdName& name, CUIntArray& value) const;
  int GetValue(const SdName& key, const SdName& name, CArray<int>& value) const;
  // Up to count numbers; missing ones get defaultValue. complete (may be null) becomes 1 when
  // exactly count were stored, else 0.
  int GetValue(const SdName& key, const SdName& name, int* values, int count, int defaultValue,
               int* complete) const;
  int GetHexValue(const SdName& key, const SdName& name, std::uint32_t& value) const;
  // The entries prefix0, prefix1, ... as far as they go without a gap; at least one.
  int GetValueBegin(const SdName& key, const SdName& prefix, CStringArray& value) const;

  // The stored number within min and max; defaultValue, as it is, when there is none.
  int GetIntValue(const SdName& key, const SdName& name, int min, int max, int defaultValue) const;
  // 1 or 0.
  int GetBoolValue(const SdName& key, const SdName& name, int defaultValue) const;

  // The value as it is kept; null when there is none. Valid until the entry changes.
  const CSettingDataPair* FindPair(const SdName& key, const SdName& name) const;
  const CSettingDataKey* FindKey(const SdName& key) const { return keys_.Find(key); }
  int GetKeyCount() const { return keys_.Count(); }
  const CSettingDataKey* GetKeyAt(int index) const;  // null outside the list

  // ---- Writing. Makes the key and the entry where they are missing. 1, or 0 for a name or
  // value that is refused. Setting what is there already changes nothing.

  int SetValue(const SdName& key, const SdName& name, const char* value);
  int SetValue(const SdName& key, const SdName& name, const char16_t* value);
  int SetValue(const SdName& key, const SdName& name, const CStringA& value);
  int SetValue(const SdName& key, const SdName& name, const CStringW& value);
  int SetValue(const SdName& key, const SdName& name, const CBuffer& value);  // narrow text
  int SetValue(const SdName& key, const SdName& name, int value);
  int SetValue(const SdName& key, const SdName& name, std::uint32_t value);
  int SetValue(const SdName& key, const SdName& name, long long value);
  int SetValue(const SdName& key, const SdName& name, const CRect& value);
  int SetValue(const SdName& key, const SdName& name, const CStringArray& value);  // TAB between
  int SetValue(const SdName& key, const SdName& name, const CUIntArray& value);
  int SetValue(const SdName& key, const SdName& name, const int* values, int count);
  int SetValue(const SdName& key, const SdName& name, char value) = delete;
  int SetValue(const SdName& key, const SdName& name, char16_t value) = delete;
  int SetValue(const SdName& key, const SdName& name, bool value) = delete;
  int SetHexValue(const SdName& key, const SdName& name, std::uint32_t value);
  // One entry an element: prefix0, prefix1, ... All entries whose names begin with prefix go first.
  int SetValueBegin(const SdName& key, const SdName& prefix, const CStringArray& value);
  int SetKey(const SdName& key);  // an empty key, where it is missing

  // ---- Structure. 1 when something changed, else 0. The unnamed ints have no meaning any more;
  // callers still pass them.

  int RemoveKey(const SdName& key, int);
  int RemoveKeyBegin(const SdName& prefix, int);
  int RemoveName(const SdName& key, const SdName& name);
  int RemoveNameAt(const SdName& key, int index);
  int RemoveNameBegin(const SdName& key, const SdName& prefix);
  // Nothing when the new name is refused or another key's.
  int RenameKey(const SdName& key, const SdName& newName);
  // Where the new name is another key's, the entries join that key, as they would when a file with
  // both is loaded.
  int RenameKeyBegin(const SdName& oldPrefix, const SdName& newPrefix);
  int MoveKeyPosition(const SdName& key, int position);  // of the list; outside it: nothing

  // What is copied replaces what has its name, and a copied key or object counts as a change even
  // when it is equal. Copying an object to itself changes nothing.
  int CopySD(const CSettingData& from);  // all content
  int CopySdKey(int, const CSettingData& from, const SdName& key, int);
  int CopySdName(int, const CSettingData& from, const SdName& key, const SdName& name, int);
  int CopySdNameBegin(int, const CSettingData& from, const SdName& key, const SdName& prefix, int);

  // 1 when both hold the same keys, in the same order unless anyOrder, with the same entries and
  // values in any order.
  int EqualSD(const CSettingData& other, int anyOrder) const;

 protected:
  // Reads and parses one file. hadContent becomes 0 for an empty file.
  int LoadFile(const char16_t* path, int& hadContent);
  // Writes one file, when something has changed; success clears the modified flag, unless a crash
  // may yet bring the old text back.
  int SaveFile(const char16_t* dir, const char16_t* name);

  // message is a text, or the id of one when its value is below 0x10000. path and data (may be
  // null) are added to it.
  void SetErrorMessage(const char* message, const char16_t* path, const char* data);

 private:
  enum class LoadFailure { kNone, kMissing, kUnreadable, kDamaged };
  struct Written;

  int Write(const SdName& key, const SdName& name, std::u16string_view value);
  int WriteNarrow(const SdName& key, const SdName& name, std::string_view value);
  int TakeText(std::string_view bytes, const char16_t* path);
  int LoadReserve(const CStringW& folder, const CStringW& name);
  bool MayReplaceReserve(const CStringW& path) const;
  bool HidesReserve(const CStringW& path) const;
  Written WriteFile(const CStringW& folder, const CStringW& name);
  int SaveBoth(const CStringW& folder, const CStringW& name, bool useReserve);
  void SetErrorText(std::string_view message, const char16_t* path, std::string_view data);

  SdKeyList keys_;
  int loaded_ = 0;
  int modified_ = 0;
  int recovered_ = 0;
  CStringA errorMessage_;
  int enciphered_ = 0;
  std::string cryptKey_;
  LoadFailure loadFailure_ = LoadFailure::kNone;
  SdTextReading reading_;
};

// ---- File names. Each does the same to the file in dir and to its reserve copy. 1 when all that
// was there was changed, else 0; what is missing is passed over, but one of the two must be there.
// A new name that settings have already is refused, since these would be lost.

int ChangeSdFileName(const char16_t* dir, const char16_t* oldName, const char16_t* newName);
// The name, of two, under which settings are to be looked for: name1 where dir or its reserve has
// it; otherwise name2 where they have that, which is given name1 if that can be done; else name1.
CStringW GetChangedSdFileName(const char16_t* dir, const char16_t* name1, const char16_t* name2);
// name + oldExt becomes name + newExt.
int ChangeSdFilesExt(const char16_t* dir, const char16_t* name, const char16_t* oldExt,
                     const char16_t* newExt);
int ChangeSdFileTime(const char16_t* dir, const char16_t* name, const CTime& time);

}  // namespace lumr
