// DXF tag tokenizer: turns an ASCII or binary DXF file into (group code, typed value) pairs, streaming.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace headless {

// The value type of a group code, by the DXF reference's group-code ranges.
enum class TagType : std::uint8_t { Text, Real, Int16, Int32, Int64, Bool, Handle, Binary };
TagType tagTypeOf(int code);
// A text as ASCII DXF writes it: control characters as a caret and a letter ("^J"), a caret as "^ ". Returns
// text itself when it has neither, else the rewritten text in buffer.
std::string_view caretText(std::string_view text, std::string& buffer);
inline bool isNumeric(TagType t) { return t != TagType::Text && t != TagType::Handle && t != TagType::Binary; }
inline bool isIntegral(TagType t) {
  return t == TagType::Int16 || t == TagType::Int32 || t == TagType::Int64 || t == TagType::Bool;
}

struct RawTag {
  int code = 0;
  TagType type = TagType::Text;
  double real = 0.0;
  long long integer = 0;
  // Texts, handles (hex digits) and binary chunks (hex digits); valid until the next call of next().
  std::string_view text;
  // Whether the group cannot be used, and why in words (valid until the next call of next()). A damaged
  // group is read whole, so the groups after it stay in step.
  enum class Damage : std::uint8_t { None, Code, Value };
  Damage damage = Damage::None;  // Code: outside the valid range; Value: a number that does not fit its type
  std::string_view damageText;
};

// Group codes run from -5 to 1071; anything else is not a group this format has.
constexpr int kMinGroupCode = -5;
constexpr int kMaxGroupCode = 1071;

// The groups of a drawing in DXF order, whatever file they come from: the tokenizer reads them from a DXF
// file, the DWG reader makes them from a drawing's objects. One reader builds the records from either.
class TagSource {
 public:
  virtual ~TagSource() = default;
  // Reads the next tag; false at the end of the input or on an error (then error() is set).
  virtual bool next(RawTag& tag) = 0;
  virtual bool failed() const = 0;
  virtual const std::string& error() const = 0;
  // Where the last tag came from, in words for messages ("line 12", "handle 2F3").
  virtual std::string location() const = 0;
  // The same as a number, which place() turns into words later.
  virtual long long position() const = 0;
  virtual std::string place(long long position) const = 0;
  // True when input remains after the last tag read.
  virtual bool hasMoreInput() = 0;
  // True when the input held more at its end than when it was opened; fileSize() is what was read.
  virtual bool grew() const = 0;
  virtual long long fileSize() const = 0;
};

class DxfTokenizer final : public TagSource {
 public:
  // Opens a file; null with an error text (naming the file) when it cannot be opened or is no regular file
  // (a folder, a FIFO, a device), which is refused before anything is read.
  static std::unique_ptr<DxfTokenizer> open(const std::string& path, std::string& error);
  ~DxfTokenizer() override;

  bool isBinary() const { return binary_; }
  // The file's size in bytes (-1 when unknown).
  long long fileSize() const override { return fileSize_; }
  bool next(RawTag& tag) override;
  bool failed() const override { return !error_.empty(); }
  const std::string& error() const override { return error_; }
  // Where the last tag began: "line N" (ASCII, the group code's line) or "byte offset N" (binary).
  std::string location() const override;
  // The same as a number: the line (ASCII) or byte offset (binary) where the last tag began.
  long long position() const override { return binary_ ? tagOffset_ : tagLine_; }
  // A position kept from earlier, in the words of location().
  std::string place(long long position) const override;
  // True when bytes remain after the last tag read.
  bool hasMoreInput() override;
  // True when the file held more bytes at its end than when it was opened; those were not read.
  bool grew() const override { return grew_; }

 private:
  DxfTokenizer(std::FILE* file, std::string path, bool binary);
  bool fill(std::size_t need);
  bool nextAscii(RawTag& tag);
  bool nextBinary(RawTag& tag);
  bool readLine(std::string_view& line);
  bool readLineRefilling(std::string_view& line);
  // Fills the tag from the value line of a group whose code is valid.
  bool takeValue(RawTag& tag, int code, std::string_view value);
  bool fail(const std::string& what);
  bool damaged(RawTag& tag, RawTag::Damage kind, std::string what);
  bool codeOutOfRange(RawTag& tag, std::string_view written);
  bool parseReal(std::string_view v, RawTag& tag);
  bool parseInteger(std::string_view v, RawTag& tag);

  std::FILE* file_;
  std::string path_;
  bool binary_;
  bool twoByteCodes_ = true;  // binary DXF of R13 and later; R12 uses one byte (255 escapes to two)
  std::vector<char> buf_;
  std::size_t pos_ = 0, end_ = 0;
  bool eof_ = false;
  bool grew_ = false;
  long long line_ = 0;          // lines consumed (ASCII)
  long long tagLine_ = 0;       // line of the last group code
  long long consumed_ = 0;      // bytes before buf_[0]
  long long tagOffset_ = 0;     // byte offset of the last group code (binary)
  std::string error_;
  std::string binaryHex_;       // hex text of the last binary chunk
  std::string caretBuffer_;     // the last binary text, rewritten with carets
  std::string damage_;          // what RawTag::damageText shows
  long long fileSize_ = -1;
};

}  // namespace headless
