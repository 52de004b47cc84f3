// KZCommon demonstration over the bundled data in examples/data (or the folder given as the
// first argument): a text file read through the text stream with byte-order-mark detection,
// a word count in a string hash table, the most frequent words through a custom-sorted string
// list, a most-recently-used list, and a collection of two item classes written and read
// back by the special filer.
#include <cstdio>
#include <string>

#include "KZCommon/KZCommon.h"

using namespace kz;

namespace {

void Print(const String& S) { std::printf("%s\n", StringToUtf8(S).c_str()); }

// Reads a whole file through the text stream; the stream picks the encoding from the BOM.
String ReadText(const String& FileName, String& EncodingName) {
  TGTextStream Stream(FileName, fmOpenRead);
  TBytes Bytes;
  Byte Block[4096];
  for (std::int32_t N; (N = Stream.Read(Block, sizeof Block)) > 0;) Bytes.append(Block, static_cast<std::size_t>(N));
  TEncoding* Encoding = Stream.GetEncoding() ? Stream.GetEncoding() : TEncoding::Default();
  EncodingName = Encoding->GetEncodingName();
  return Encoding->GetString(Bytes.data(), static_cast<std::int32_t>(Bytes.size()));
}

// Two item classes that the special filer keeps apart.
class TCargo : public TCollectionItem {
  KZ_CLASS(TCargo, TCollectionItem)
 public:
  using TCollectionItem::TCollectionItem;
  String GetName() const { return FName; }
  void SetName(String V) { FName = std::move(V); }
  std::int32_t GetCrates() const { return FCrates; }
  void SetCrates(std::int32_t V) { FCrates = V; }
  String GetDisplayName() override { return Format(u"%s (%d crates)", {FName, FCrates}); }

 private:
  String FName;
  std::int32_t FCrates = 0;
};

class TPassenger : public TCollectionItem {
  KZ_CLASS(TPassenger, TCollectionItem)
 public:
  using TCollectionItem::TCollectionItem;
  String GetName() const { return FName; }
  void SetName(String V) { FName = std::move(V); }
  bool GetBicycle() const { return FBicycle; }
  void SetBicycle(bool V) { FBicycle = V; }
  String GetDisplayName() override { return FName + (FBicycle ? u" with a bicycle" : u""); }

 private:
  String FName;
  bool FBicycle = false;
};

void RegisterDemoClasses() {
  RegisterClass(TCargo::ClassInfo());
  RegisterClass(TPassenger::ClassInfo());
  RegisterProperties(TCargo::ClassInfo(), {Published(u"Name", &TCargo::GetName, &TCargo::SetName),
                                           Published(u"Crates", &TCargo::GetCrates, &TCargo::SetCrates)});
  RegisterProperties(TPassenger::ClassInfo(),
                     {Published(u"Name", &TPassenger::GetName, &TPassenger::SetName),
                      Published(u"Bicycle", &TPassenger::GetBicycle, &TPassenger::SetBicycle)});
}

bool IsWordChar(Char C) { return (C >= u'a' && C <= u'z') || (C >= u'A' && C <= u'Z') || C >= 0xC0; }

}  // namespace

int main(int argc, char** argv) {
  const std::string Folder = argc > 1 ? argv[1] : KZ_DEMO_DATA;
  const String Dir = Utf8ToString(Folder) + u"/";
  try {
    // 1. Text with a byte-order mark.
    String EncodingName;
    const String Text = ReadText(Dir + u"harbour-log.txt", EncodingName);
    TStringList Lines;
    Lines.SetText(Text);
    Print(Format(u"harbour-log.txt: %d lines, %d characters, encoding %s", {Lines.GetCount(),
          static_cast<std::int32_t>(Text.size()), EncodingName}));

    // 2. Word count in a chained string hash table (values are counts stored as words).
    TGStringHashtable Counts(11, 0.75f);
    for (std::int32_t i = 0; i < Lines.GetCount(); ++i) {
      const String& Line = Lines.Get(i);
      for (std::size_t p = 0; p < Line.size();) {
        while (p < Line.size() && !IsWordChar(Line[p])) ++p;
        std::size_t q = p;
        while (q < Line.size() && IsWordChar(Line[q])) ++q;
        if (q > p) {
          const String Word = AnsiLowerCase(StringView(Line).substr(p, q - p));
          Pointer Old = nullptr;
          Counts.ContainsKey(Word, Old);
          Counts.Put(Word, reinterpret_cast<Pointer>(reinterpret_cast<NativeInt>(Old) + 1));
        }
        p = q;
      }
    }
    Print(Format(u"distinct words: %d (table capacity %u, %d collisions)",
                 {Counts.GetCount(), Counts.GetCapacity(), Counts.GetCollisions()}));

    // 3. The most frequent words: a string list sorted by count, then alphabetically.
    TStringList Words;
    for (const String& W : Counts.ToArray()) Words.Add(W);
    auto CountOf = [&](std::int32_t I) { return reinterpret_cast<NativeInt>(Counts.Get(Words.Get(I))); };
    Words.CustomSort([&](TStringList* L, std::int32_t A, std::int32_t B) {
      const NativeInt CA = CountOf(A), CB = CountOf(B);
      return CA != CB ? (CA > CB ? -1 : 1) : CompareStr(L->Get(A), L->Get(B));
    });
    String Top = u"most frequent:";
    for (std::int32_t i = 0; i < 8 && i < Words.GetCount(); ++i)
      Top += Format(u" %s(%d)", {Words.Get(i), static_cast<std::int64_t>(CountOf(i))});
    Print(Top);

    // 4. A most-recently-used list of four entries fed from recent.txt.
    String Unused;
    TStringList Opened;
    Opened.SetText(ReadText(Dir + u"recent.txt", Unused));
    TRecentFiles Recent;
    for (std::int32_t i = 0; i < Opened.GetCount(); ++i) Recent.Push(Opened.Get(i));
    Print(u"recent files: " + Recent.GetCommaText());

    // 5. A collection of two item classes through the special filer and back.
    RegisterDemoClasses();
    TCollection Manifest(&TCargo::ClassInfo());
    auto* Apples = static_cast<TCargo*>(Manifest.Add());
    Apples->SetName(u"apples");
    Apples->SetCrates(40);
    auto* Ada = static_cast<TPassenger*>(Manifest.Add(&TPassenger::ClassInfo()));
    Ada->SetName(u"Ada");
    Ada->SetBicycle(true);
    auto* Piano = static_cast<TCargo*>(Manifest.Add());
    Piano->SetName(u"piano");
    Piano->SetCrates(1);
    TMemoryStream Stored;
    {
      TWriter Writer(&Stored);
      TGSpecialFiler(&Writer).WriteCollection(&Manifest);
    }
    Stored.SetPosition(0);
    TCollection Restored(&TCargo::ClassInfo());
    {
      TReader Reader(&Stored);
      TGSpecialFiler(&Reader).ReadCollection(&Restored);
    }
    Print(Format(u"manifest stored in %d bytes, read back %d items:", {static_cast<std::int64_t>(Stored.GetSize()),
                                                                       Restored.GetCount()}));
    for (std::int32_t i = 0; i < Restored.GetCount(); ++i)
      Print(u"  " + Restored.GetItem(i)->ClassName() + u": " + Restored.GetItem(i)->GetDisplayName());
    return 0;
  } catch (const Exception& E) {
    std::fprintf(stderr, "error: %s\n", E.what());
    return 1;
  }
}
