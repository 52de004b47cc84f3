#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Runtime/Runtime.h"

using namespace kz;

namespace {

enum TShade : std::uint8_t { shLight, shDark };

class TPoint : public TPersistent {
  KZ_CLASS(TPoint, TPersistent)
 public:
  std::int32_t GetX() const { return FX; }
  void SetX(std::int32_t V) { FX = V; }
  std::int32_t FX = 0;
};

class TTag : public TCollectionItem {
  KZ_CLASS(TTag, TCollectionItem)
 public:
  explicit TTag(TCollection* C) : TCollectionItem(C) {}
  const String& GetLabel() const { return FLabel; }
  void SetLabel(const String& V) { FLabel = V; }
  String FLabel;
};

std::vector<String> GLoadedOrder;

class TGadget : public TComponent {
  KZ_CLASS(TGadget, TComponent)
 public:
  explicit TGadget(TComponent* AOwner) : TComponent(AOwner), FTags(this, &TTag::ClassInfo()) {}

  std::int32_t GetCount() const { return FCount; }
  void SetCount(std::int32_t V) {
    if (V < 0) throw EListError(SListCountError, {V});
    FCount = V;
  }
  std::int64_t GetBig() const { return FBig; }
  void SetBig(std::int64_t V) { FBig = V; }
  double GetRatio() const { return FRatio; }
  void SetRatio(double V) { FRatio = V; }
  bool GetOn() const { return FOn; }
  void SetOn(bool V) { FOn = V; }
  const String& GetCaption() const { return FCaption; }
  void SetCaption(const String& V) { FCaption = V; }
  TShade GetShade() const { return FShade; }
  void SetShade(TShade V) { FShade = V; }
  TPoint* GetOrigin() const { return &FOrigin; }
  TOwnedCollection* GetTags() const { return &FTags; }

  void DefineProperties(TFiler* Filer) override {
    inherited::DefineProperties(Filer);
    Filer->DefineProperty(
        u"Notes",
        [this](TReader* R) {
          FNotes.clear();
          R->ReadListBegin();
          while (!R->EndOfList()) FNotes.push_back(R->ReadString());
          R->ReadListEnd();
        },
        [this](TWriter* W) {
          W->WriteListBegin();
          for (const String& S : FNotes) W->WriteString(S);
          W->WriteListEnd();
        },
        !FNotes.empty());
    Filer->DefineBinaryProperty(
        u"Blob",
        [this](TStream* S) {
          FBlob.assign(static_cast<std::size_t>(S->GetSize()), 0);
          S->ReadBuffer(FBlob.data(), static_cast<std::int32_t>(FBlob.size()));
        },
        [this](TStream* S) { S->WriteBuffer(FBlob.data(), static_cast<std::int32_t>(FBlob.size())); },
        !FBlob.empty());
    // Never written; an old stored form that has it is read and dropped.
    Filer->DefineProperty(u"Obsolete", [](TReader* R) { R->ReadInteger(); }, nullptr, false);
  }
  void Loaded() override {
    inherited::Loaded();
    GLoadedOrder.push_back(GetName());
  }

  std::int32_t FCount = 0;
  std::int64_t FBig = 0;
  double FRatio = 0;
  bool FOn = false;
  String FCaption;
  TShade FShade = shLight;
  mutable TPoint FOrigin;
  mutable TOwnedCollection FTags;
  std::vector<String> FNotes;
  TBytes FBlob;
};

void RegisterFilerTestClasses() {
  RegisterClass(TGadget::ClassInfo());
  RegisterProperties(TPoint::ClassInfo(), {Published(u"X", &TPoint::GetX, &TPoint::SetX)});
  RegisterProperties(TTag::ClassInfo(), {Published(u"Label", &TTag::GetLabel, &TTag::SetLabel)});
  RegisterProperties(TGadget::ClassInfo(), {Published(u"Count", &TGadget::GetCount, &TGadget::SetCount),
                                            Published(u"Big", &TGadget::GetBig, &TGadget::SetBig),
                                            Published(u"Ratio", &TGadget::GetRatio, &TGadget::SetRatio),
                                            Published(u"On", &TGadget::GetOn, &TGadget::SetOn),
                                            Published(u"Caption", &TGadget::GetCaption, &TGadget::SetCaption),
                                            Published(u"Shade", &TGadget::GetShade, &TGadget::SetShade),
                                            PublishedObject(u"Origin", &TGadget::GetOrigin),
                                            PublishedObject(u"Tags", &TGadget::GetTags)});
}

void Fill(TGadget& G, int Base) {
  G.FCount = Base;
  G.FBig = std::int64_t{1} << (40 + Base);
  G.FRatio = 0.1 * Base;
  G.FOn = Base % 2;
  G.FCaption = u"caption \u00e9\U0001F600 " + IntToStr(Base);
  G.FShade = shDark;
  G.FOrigin.FX = -Base;
  static_cast<TTag*>(G.FTags.Add())->FLabel = u"a" + IntToStr(Base);
  static_cast<TTag*>(G.FTags.Add())->FLabel = u"b";
  G.FNotes = {u"n1", u""};
  G.FBlob = {0, 1, 2, 255};
}

void ExpectSame(TGadget& A, TGadget& B) {
  EXPECT_EQ(A.GetName(), B.GetName());
  EXPECT_EQ(A.FCount, B.FCount);
  EXPECT_EQ(A.FBig, B.FBig);
  EXPECT_EQ(A.FRatio, B.FRatio);
  EXPECT_EQ(A.FOn, B.FOn);
  EXPECT_EQ(A.FCaption, B.FCaption);
  EXPECT_EQ(A.FShade, B.FShade);
  EXPECT_EQ(A.FOrigin.FX, B.FOrigin.FX);
  ASSERT_EQ(A.FTags.GetCount(), B.FTags.GetCount());
  for (int i = 0; i < A.FTags.GetCount(); ++i)
    EXPECT_EQ(static_cast<TTag*>(A.FTags.GetItem(i))->FLabel, static_cast<TTag*>(B.FTags.GetItem(i))->FLabel);
  EXPECT_EQ(A.FNotes, B.FNotes);
  EXPECT_EQ(A.FBlob, B.FBlob);
}

std::string ReadError(TMemoryStream& M, const std::function<void(TReader&)>& F) {
  M.SetPosition(0);
  TReader R(&M);
  try {
    F(R);
  } catch (const EReadError& E) {
    return StringToUtf8(E.Message());
  }
  return "no error";
}

}  // namespace

TEST(Filer, ValuesRoundTripInTheirSmallestForm) {
  TMemoryStream M;
  const std::int64_t Ints[] = {0, -128, 127, 128, -32769, INT32_MAX, INT32_MIN, INT64_MIN, INT64_MAX};
  {
    TWriter W(&M);
    W.WriteListBegin();
    for (std::int64_t I : Ints) W.WriteInteger(I);
    W.WriteFloat(-0.0);
    W.WriteFloat(std::numeric_limits<double>::infinity());
    W.WriteBoolean(true);
    W.WriteString(u"");
    W.WriteString(u"\u00fc\U0001F600");
    W.WriteListEnd();
  }
  EXPECT_EQ(M.GetMemory()[1], vaInt8);
  EXPECT_EQ(M.GetMemory()[3], vaInt8);
  M.SetPosition(0);
  TReader R(&M);
  R.ReadListBegin();
  for (std::int64_t I : Ints) EXPECT_EQ(R.ReadInt64(), I);
  EXPECT_TRUE(std::signbit(R.ReadFloat()));
  EXPECT_EQ(R.ReadFloat(), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(R.ReadBoolean());
  EXPECT_EQ(R.ReadString(), u"");
  EXPECT_EQ(R.ReadString(), u"\u00fc\U0001F600");
  EXPECT_TRUE(R.EndOfList());
  R.ReadListEnd();

  // Readers insist on the kind they are asked for.
  EXPECT_EQ(ReadError(M, [](TReader& R) { R.ReadString(); }), "Invalid stream value: string expected, found list");
  EXPECT_EQ(ReadError(M, [](TReader& R) { R.ReadListBegin(); R.ReadListBegin(); }),
            "Invalid stream value: list expected, found integer");
  EXPECT_EQ(ReadError(M, [](TReader& R) {
              R.ReadListBegin();
              for (int i = 0; i < 8; ++i) R.SkipValue();
              R.ReadInteger();  // INT64_MAX does not fit
            }),
            "Integer value 9223372036854775807 out of range");
  EXPECT_EQ(ReadError(M, [](TReader& R) {
              R.SkipValue();
              R.ReadValue();
            }),
            "Unexpected end of stream");
}

TEST(Filer, ComponentTreeRoundTripWithPublishedAndDefinedProperties) {
  RegisterFilerTestClasses();
  TGadget Root(nullptr);
  Root.SetName(u"Root");
  Fill(Root, 3);
  auto* Child = new TGadget(&Root);
  Child->SetName(u"Child");
  Fill(*Child, 4);
  auto* Grandchild = new TGadget(Child);
  Grandchild->SetName(u"Grandchild");

  TMemoryStream M;
  {
    TWriter W(&M);
    W.WriteRootComponent(&Root);
  }
  const std::int64_t Written = M.GetSize();
  M.SetPosition(0);
  GLoadedOrder.clear();
  std::unique_ptr<TComponent> Copy;
  {
    TReader R(&M);
    Copy = R.ReadRootComponent();
  }
  EXPECT_EQ(M.GetPosition(), Written);  // the reader gave back what it read ahead
  EXPECT_EQ(GLoadedOrder, (std::vector<String>{u"Root", u"Child", u"Grandchild"}));
  auto* C = dynamic_cast<TGadget*>(Copy.get());
  ASSERT_NE(C, nullptr);
  EXPECT_FALSE(C->HasState(csLoading));
  ExpectSame(Root, *C);
  ASSERT_EQ(C->GetComponentCount(), 1);
  ExpectSame(*Child, *static_cast<TGadget*>(C->GetComponent(0)));
  ASSERT_EQ(C->GetComponent(0)->GetComponentCount(), 1);
  EXPECT_EQ(C->GetComponent(0)->GetComponent(0)->GetName(), u"Grandchild");

  // Reading into an existing root of the same class.
  TGadget Into(nullptr);
  M.SetPosition(0);
  TReader R2(&M);
  R2.ReadRootComponent(&Into);
  ExpectSame(Root, Into);
}

TEST(Filer, ReadErrorsNameWhatWentWrong) {
  RegisterFilerTestClasses();
  auto Stream = [](const std::function<void(TWriter&)>& F) {
    auto M = std::make_unique<TMemoryStream>();
    TWriter W(M.get());
    F(W);
    return M;
  };
  auto Header = [](TWriter& W, StringView Class) {
    W.WriteSignature();
    W.WriteString(Class);
    W.WriteString(u"X");
  };
  auto M = Stream([&](TWriter& W) { Header(W, u"TNoSuchGadget"); });
  M->SetPosition(0);
  try {
    TReader R(M.get());
    R.ReadRootComponent();
    FAIL();
  } catch (const EClassNotFound& E) {
    EXPECT_EQ(E.Message(), u"Class TNoSuchGadget not found");
  }
  M = Stream([&](TWriter& W) {
    Header(W, u"TGadget");
    W.WritePropName(u"Colour");
    W.WriteInteger(1);
  });
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.ReadRootComponent(); }), "Property Colour does not exist");
  M = Stream([&](TWriter& W) {
    Header(W, u"TGadget");
    W.WritePropName(u"count");  // names match case-insensitively
    W.WriteInteger(-1);
  });
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.ReadRootComponent(); }),
            "Error reading TGadget.count: List count out of bounds (-1)");
  M = Stream([&](TWriter& W) {
    Header(W, u"TGadget");
    W.WritePropName(u"Obsolete");
    W.WriteInteger(5);
    W.WritePropName(u"Tags");
    W.WriteString(u"not a collection");
  });
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.ReadRootComponent(); }), "Invalid value for property Tags");
  M = Stream([&](TWriter& W) { Header(W, u"TGadget"); });
  M->GetMemory()[3] = '0';
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.ReadRootComponent(); }), "Invalid stream format");
  M = Stream([&](TWriter& W) { Header(W, u"TGadget"); });
  TGadget Other(nullptr);
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.ReadRootComponent(); }), "Unexpected end of stream");
  M = Stream([&](TWriter& W) { Header(W, u"TComponent"); });
  EXPECT_EQ(ReadError(*M, [&](TReader& R) { R.ReadRootComponent(&Other); }),
            "Stream holds a TComponent, not a TGadget");
  // Nesting is bounded whatever the data says.
  M = Stream([](TWriter& W) {
    for (int i = 0; i < 2000; ++i) W.WriteListBegin();
  });
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.SkipValue(); }), "Stream nesting deeper than 512 levels");
  // A huge announced length fails on the missing bytes, not on memory.
  M = Stream([](TWriter& W) { W.WriteString(u"abc"); });
  M->GetMemory()[4] = 0x7F;
  EXPECT_EQ(ReadError(*M, [](TReader& R) { R.ReadString(); }), "Unexpected end of stream");

  TMemoryStream Out;
  TWriter W(&Out);
  EXPECT_THROW(W.WritePropName(u""), EWriteError);
  EXPECT_THROW(W.WritePropName(String(256, u'x')), EWriteError);
}

TEST(Filer, PublishedPropertiesFollowTheClassChain) {
  RegisterFilerTestClasses();
  const std::vector<TPropInfo> Props = GetPropList(&TGadget::ClassInfo());
  ASSERT_EQ(Props.size(), 8u);
  EXPECT_EQ(Props[0].Name, u"Count");
  EXPECT_EQ(Props[5].Kind, pkInteger);  // an enumeration
  EXPECT_EQ(Props[1].Kind, pkInt64);
  EXPECT_EQ(Props[7].Kind, pkObject);
  TGadget G(nullptr);
  Props[5].Set(&G, TVariant(1));
  EXPECT_EQ(G.FShade, shDark);
  EXPECT_EQ(Props[4].Get(&G).AsString(), u"");
  EXPECT_TRUE(GetPropList(&TPersistent::ClassInfo()).empty());
}
