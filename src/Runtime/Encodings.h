// Text encodings: bytes to 16-bit characters and back, with byte-order marks (preambles).
#pragma once

#include <cstdint>

#include "Runtime/Object.h"
#include "Runtime/Types.h"

namespace kz {

/// A character encoding. Decoding never fails and never reads outside the given bytes:
/// ill-formed input becomes U+FFFD. Every method is const and the encodings keep no state,
/// so one instance may serve any number of streams and threads.
class TEncoding : public TObject {
  KZ_CLASS(TEncoding, TObject)
 public:
  /// The byte-order mark written at the start of a text in this encoding (may be empty).
  virtual TBytes GetPreamble() const = 0;
  /// The number of bytes GetBytes(S) produces.
  virtual std::int32_t GetByteCount(StringView S) const;
  /// The number of 16-bit characters that the complete sequences among Bytes decode to.
  /// An incomplete but so far well-formed sequence at the very end is not counted (more
  /// bytes may complete it); ill-formed bytes count as the U+FFFD they decode to.
  virtual std::int32_t GetCharCount(const Byte* Bytes, std::int32_t Count) const = 0;
  /// Decodes Count bytes; an incomplete sequence at the end becomes U+FFFD as well.
  virtual String GetString(const Byte* Bytes, std::int32_t Count) const = 0;
  /// Encodes S; characters the encoding cannot represent become '?' (single-byte
  /// encodings) or U+FFFD (unpaired surrogates in UTF-8).
  virtual TBytes GetBytes(StringView S) const = 0;
  /// The code page number: 1252, 65001, 1200 (UTF-16LE) or 1201 (UTF-16BE).
  virtual std::int32_t GetCodePage() const = 0;
  virtual String GetEncodingName() const = 0;

  /// The shared instances; they live as long as the library and are never freed by a
  /// stream that was told to own its encoding.
  /// The default ("ANSI") encoding is Windows-1252, whatever the host's locale: one fixed
  /// single-byte code page with an empty preamble, so every byte decodes and re-encodes
  /// to itself (the five bytes the code page leaves undefined map to U+0081, U+008D,
  /// U+008F, U+0090 and U+009D).
  static TEncoding* Default();
  static TEncoding* UTF8();                // preamble EF BB BF
  static TEncoding* Unicode();             // UTF-16 little-endian, preamble FF FE
  static TEncoding* BigEndianUnicode();    // UTF-16 big-endian, preamble FE FF
  static bool IsStandardEncoding(const TEncoding* AEncoding);

  /// Byte-order-mark detection over the first Count bytes of Buffer. With AEncoding null it
  /// chooses, testing in this order, UTF-16LE (FF FE), UTF-16BE (FE FF), UTF-8 (EF BB BF)
  /// or the default encoding, stores the choice in AEncoding and answers its preamble
  /// length. With AEncoding given it answers that encoding's preamble length when Buffer
  /// starts with the preamble, else 0.
  static std::int32_t GetBufferEncoding(const Byte* Buffer, std::int32_t Count, TEncoding*& AEncoding);
};

/// Windows-1252, the library's default ("ANSI") encoding.
class TAnsiEncoding : public TEncoding {
  KZ_CLASS(TAnsiEncoding, TEncoding)
 public:
  TBytes GetPreamble() const override;
  std::int32_t GetByteCount(StringView S) const override;
  std::int32_t GetCharCount(const Byte* Bytes, std::int32_t Count) const override;
  String GetString(const Byte* Bytes, std::int32_t Count) const override;
  TBytes GetBytes(StringView S) const override;
  std::int32_t GetCodePage() const override { return 1252; }
  String GetEncodingName() const override { return u"Windows-1252"; }
};

/// UTF-8. Overlong forms, encoded surrogates and values above U+10FFFF are ill-formed; each
/// maximal ill-formed subpart decodes to one U+FFFD.
class TUTF8Encoding : public TEncoding {
  KZ_CLASS(TUTF8Encoding, TEncoding)
 public:
  TBytes GetPreamble() const override;
  std::int32_t GetCharCount(const Byte* Bytes, std::int32_t Count) const override;
  String GetString(const Byte* Bytes, std::int32_t Count) const override;
  TBytes GetBytes(StringView S) const override;
  std::int32_t GetCodePage() const override { return 65001; }
  String GetEncodingName() const override { return u"UTF-8"; }
};

/// UTF-16 little-endian. Code units pass through as they are (unpaired surrogates too);
/// only an odd trailing byte is ill-formed.
class TUnicodeEncoding : public TEncoding {
  KZ_CLASS(TUnicodeEncoding, TEncoding)
 public:
  TBytes GetPreamble() const override;
  std::int32_t GetByteCount(StringView S) const override;
  std::int32_t GetCharCount(const Byte* Bytes, std::int32_t Count) const override;
  String GetString(const Byte* Bytes, std::int32_t Count) const override;
  TBytes GetBytes(StringView S) const override;
  std::int32_t GetCodePage() const override { return 1200; }
  String GetEncodingName() const override { return u"UTF-16LE"; }

 protected:
  virtual bool BigEndian() const { return false; }
};

/// UTF-16 big-endian; otherwise as TUnicodeEncoding.
class TBigEndianUnicodeEncoding : public TUnicodeEncoding {
  KZ_CLASS(TBigEndianUnicodeEncoding, TUnicodeEncoding)
 public:
  TBytes GetPreamble() const override;
  std::int32_t GetCodePage() const override { return 1201; }
  String GetEncodingName() const override { return u"UTF-16BE"; }

 protected:
  bool BigEndian() const override { return true; }
};

}  // namespace kz
