#include <gtest/gtest.h>

#include <random>

#include "GStreams/GStreams.h"
#include "Runtime/FilerFixture.h"

using namespace kztest;

namespace {

// A gadget that also stores a collection whose items keep their own classes.
class TDrawing : public TGadget {
  KZ_CLASS(TDrawing, TGadget)
 public:
  explicit TDrawing(TComponent* AOwner) : TGadget(AOwner) {}
  void DefineProperties(TFiler* Filer) override {
    inherited::DefineProperties(Filer);
    Filer->DefineProperty(
        u"Shapes", [this](TReader* R) { TGSpecialFiler(R).ReadCollection(&FShapes); },
        [this](TWriter* W) { TGSpecialFiler(W).WriteCollection(&FShapes); }, true);
  }
  TCollection FShapes{&TTag::ClassInfo()};
};

void AddShapes(TCollection& C) {
  static_cast<TTag*>(C.Add())->FLabel = u"one";
  auto* S = static_cast<TSizedTag*>(C.Add(&TSizedTag::ClassInfo()));
  S->FLabel = u"two";
  S->FSize = 2;
  static_cast<TTag*>(C.Add())->FLabel = u"three";
}

TBytes Written(const std::function<void(TWriter&)>& F) {
  TBytesStream M;
  TWriter W(&M);
  F(W);
  return M.GetBytes();
}

// A drawing with every kind of property and an empty drawing inside it, as stored.
TBytes Sketch() {
  RegisterFilerTestClasses();
  RegisterClass(TDrawing::ClassInfo());
  TDrawing D(nullptr);
  D.SetName(u"Sketch");
  Fill(D, 3);
  AddShapes(D.FShapes);
  (new TDrawing(&D))->SetName(u"Inner");
  return Written([&](TWriter& W) { W.WriteRootComponent(&D); });
}

}  // namespace

TEST(GSpecialFiler, ComponentWithItemsOfTwoClassesRoundTrips) {
  TBytesStream M(Sketch());
  std::unique_ptr<TComponent> Copy = TReader(&M).ReadRootComponent();
  auto* D = dynamic_cast<TDrawing*>(Copy.get());
  ASSERT_NE(D, nullptr);
  TDrawing Expected(nullptr);
  Expected.SetName(u"Sketch");
  Fill(Expected, 3);
  AddShapes(Expected.FShapes);
  ExpectSame(Expected, *D);
  ExpectSameItems(Expected.FShapes, D->FShapes);
  EXPECT_EQ(D->FShapes.GetItem(1)->ClassType(), &TSizedTag::ClassInfo());
  ASSERT_EQ(D->GetComponentCount(), 1);
  EXPECT_EQ(static_cast<TDrawing*>(D->GetComponent(0))->FShapes.GetCount(), 0);
}

TEST(GSpecialFiler, MissingReaderWriterOrClass) {
  RegisterFilerTestClasses();
  TMemoryStream M;
  TWriter W(&M);
  TCollection C(&TTag::ClassInfo());
  auto Message = [](const std::function<void()>& F) {
    try {
      F();
    } catch (const EStreamError& E) {
      return E.Message();
    }
    return String();
  };
  EXPECT_EQ(Message([&] { TGSpecialFiler(&W).ReadCollection(&C); }), u"No TReader defined for filer");
  EXPECT_EQ(Message([&] { TGSpecialFiler().WriteCollection(&C); }), u"No TWriter defined for filer");

  // An unregistered class stops the read; the items read before it stay.
  W.WriteValue(vaCollection);
  for (const char16_t* Class : {u"TTag", u"TUnknownTag"}) {
    W.WriteListBegin();
    W.WritePropName(u"HiddenItemClass");
    W.WriteString(Class);
    W.WriteListEnd();
  }
  W.WriteListEnd();
  M.SetPosition(0);
  C.Add();
  C.Add();
  TReader R(&M);
  EXPECT_THROW(TGSpecialFiler(&R).ReadCollection(&C), EClassNotFound);
  EXPECT_EQ(C.GetCount(), 1);
  EXPECT_EQ(C.GetUpdateCount(), 0);
}

TEST(GSpecialFiler, TruncatedAndCorruptedStreamsRaiseOnlyReadErrors) {
  const TBytes Valid = Sketch();
  auto Read = [](const TBytes& Data) -> int {
    TBytesStream M(Data);
    try {
      TReader(&M).ReadRootComponent();
      return 0;
    } catch (const EReadError&) {
      return 1;
    } catch (const EClassNotFound&) {
      return 2;
    }
  };
  ASSERT_EQ(Read(Valid), 0);
  for (std::size_t Len = 0; Len < Valid.size(); ++Len) ASSERT_EQ(Read(Valid.substr(0, Len)), 1) << Len;

  std::mt19937 Rng(2024);
  int Failures = 0;
  for (int i = 0; i < 3000; ++i) {
    TBytes Bad = Valid;
    for (int Flips = 1 + static_cast<int>(Rng() % 3); Flips > 0; --Flips)
      Bad[Rng() % Bad.size()] ^= static_cast<Byte>(1u << (Rng() % 8));
    Failures += Read(Bad) != 0;  // anything but the library's read errors escapes and fails
  }
  EXPECT_GT(Failures, 1000);
}
