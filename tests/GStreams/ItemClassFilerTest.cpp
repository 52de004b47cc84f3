#include <gtest/gtest.h>

#include <random>

#include "GStreams/GStreams.h"

using namespace kz;

namespace {

class TShape : public TCollectionItem {
  KZ_CLASS(TShape, TCollectionItem)
 public:
  explicit TShape(TCollection* C) : TCollectionItem(C) {}
  std::int32_t GetSize() const { return FSize; }
  void SetSize(std::int32_t V) { FSize = V; }
  std::int32_t FSize = 0;
};

class TLabelledShape : public TShape {
  KZ_CLASS(TLabelledShape, TShape)
 public:
  explicit TLabelledShape(TCollection* C) : TShape(C) {}
  const String& GetText() const { return FText; }
  void SetText(const String& V) { FText = V; }
  String FText;
};

// A component whose shapes keep their own classes through the special filer, beside a
// published property and a binary defined property.
class TDrawing : public TComponent {
  KZ_CLASS(TDrawing, TComponent)
 public:
  explicit TDrawing(TComponent* AOwner) : TComponent(AOwner), FShapes(&TShape::ClassInfo()) {}
  const String& GetTitle() const { return FTitle; }
  void SetTitle(const String& V) { FTitle = V; }
  void DefineProperties(TFiler* Filer) override {
    inherited::DefineProperties(Filer);
    Filer->DefineProperty(
        u"Shapes", [this](TReader* R) { TGSpecialFiler(R).ReadCollection(&FShapes); },
        [this](TWriter* W) { TGSpecialFiler(W).WriteCollection(&FShapes); }, true);
    Filer->DefineBinaryProperty(
        u"Thumb",
        [this](TStream* S) {
          FThumb.assign(static_cast<std::size_t>(S->GetSize()), 0);
          S->ReadBuffer(FThumb.data(), static_cast<std::int32_t>(FThumb.size()));
        },
        [this](TStream* S) { S->WriteBuffer(FThumb.data(), static_cast<std::int32_t>(FThumb.size())); },
        !FThumb.empty());
  }
  void Loaded() override {
    inherited::Loaded();
    ++FLoadedCount;
  }
  String FTitle;
  TCollection FShapes;
  TBytes FThumb;
  int FLoadedCount = 0;
};

void RegisterDrawingClasses() {
  RegisterClass(TShape::ClassInfo());
  RegisterClass(TLabelledShape::ClassInfo());
  RegisterClass(TDrawing::ClassInfo());
  RegisterProperties(TShape::ClassInfo(), {Published(u"Size", &TShape::GetSize, &TShape::SetSize)});
  RegisterProperties(TLabelledShape::ClassInfo(), {Published(u"Text", &TLabelledShape::GetText, &TLabelledShape::SetText)});
  RegisterProperties(TDrawing::ClassInfo(), {Published(u"Title", &TDrawing::GetTitle, &TDrawing::SetTitle)});
}

void AddShapes(TCollection& C) {
  static_cast<TShape*>(C.Add(&TShape::ClassInfo()))->FSize = 1;
  auto* L = static_cast<TLabelledShape*>(C.Add(&TLabelledShape::ClassInfo()));
  L->FSize = 2;
  L->FText = u"two";
  static_cast<TShape*>(C.Add(&TShape::ClassInfo()))->FSize = 300;
}

void ExpectShapes(TCollection& C) {
  ASSERT_EQ(C.GetCount(), 3);
  EXPECT_EQ(C.GetItem(0)->ClassType(), &TShape::ClassInfo());
  EXPECT_EQ(C.GetItem(1)->ClassType(), &TLabelledShape::ClassInfo());
  EXPECT_EQ(C.GetItem(2)->ClassType(), &TShape::ClassInfo());
  EXPECT_EQ(static_cast<TShape*>(C.GetItem(1))->FSize, 2);
  EXPECT_EQ(static_cast<TLabelledShape*>(C.GetItem(1))->FText, u"two");
  EXPECT_EQ(static_cast<TShape*>(C.GetItem(2))->FSize, 300);
}

TBytes DrawingStream() {
  TDrawing D(nullptr);
  D.SetName(u"Sketch");
  D.FTitle = u"A title";
  AddShapes(D.FShapes);
  D.FThumb = {9, 8, 7};
  auto* Inner = new TDrawing(&D);
  Inner->SetName(u"Inner");
  AddShapes(Inner->FShapes);
  TBytesStream M;
  TWriter W(&M);
  W.WriteRootComponent(&D);
  return M.GetBytes();
}

}  // namespace

TEST(GSpecialFiler, ItemsComeBackWithTheirOwnClasses) {
  RegisterDrawingClasses();
  TMemoryStream M;
  TCollection Source(&TShape::ClassInfo());
  AddShapes(Source);
  {
    TWriter W(&M);
    TGSpecialFiler(&W).WriteCollection(&Source);
  }
  M.SetPosition(0);
  TCollection Copy(&TShape::ClassInfo());
  Copy.Add();  // cleared by the read
  TReader R(&M);
  TGSpecialFiler(&R).ReadCollection(&Copy);
  ExpectShapes(Copy);
  EXPECT_EQ(Copy.GetUpdateCount(), 0);

  // The layout: marker, then per item a list led by the hidden class-name property.
  TBytesStream E;
  TCollection Empty(&TShape::ClassInfo());
  {
    TWriter W(&E);
    TGSpecialFiler(&W).WriteCollection(&Empty);
  }
  EXPECT_EQ(E.GetBytes(), (TBytes{vaCollection, vaNull}));
  E.SetPosition(0);
  TReader ER(&E);
  TGSpecialFiler(&ER).ReadCollection(&Copy);
  EXPECT_EQ(Copy.GetCount(), 0);

  TBytesStream One;
  TCollection Single(&TShape::ClassInfo());
  Single.Add(&TLabelledShape::ClassInfo());
  {
    TWriter W(&One);
    TGSpecialFiler(&W).WriteCollection(&Single);
  }
  TBytes Expected{vaCollection, vaList, 15};
  for (char C : std::string("HiddenItemClass")) Expected.push_back(static_cast<Byte>(C));
  Expected.push_back(vaString);
  EXPECT_EQ(One.GetBytes().substr(0, Expected.size()), Expected);
}

TEST(GSpecialFiler, MissingReaderWriterOrClass) {
  RegisterDrawingClasses();
  TMemoryStream M;
  TWriter W(&M);
  TReader R(&M);
  TCollection C(&TShape::ClassInfo());
  try {
    TGSpecialFiler(&W).ReadCollection(&C);
    FAIL();
  } catch (const EStreamError& E) {
    EXPECT_EQ(E.Message(), u"No TReader defined for filer");
  }
  try {
    TGSpecialFiler(&R).WriteCollection(&C);
    FAIL();
  } catch (const EStreamError& E) {
    EXPECT_EQ(E.Message(), u"No TWriter defined for filer");
  }
  EXPECT_THROW(TGSpecialFiler().WriteCollection(&C), EStreamError);

  // An unregistered class stops the read; the items read before it stay.
  W.WriteValue(vaCollection);
  for (const char16_t* Class : {u"TShape", u"TUnknownShape"}) {
    W.WriteListBegin();
    W.WritePropName(u"HiddenItemClass");
    W.WriteString(Class);
    W.WriteListEnd();
  }
  W.WriteListEnd();
  M.SetPosition(0);
  TReader R2(&M);
  EXPECT_THROW(TGSpecialFiler(&R2).ReadCollection(&C), EClassNotFound);
  EXPECT_EQ(C.GetCount(), 1);
  EXPECT_EQ(C.GetUpdateCount(), 0);
}

TEST(GSpecialFiler, ComponentWithMixedCollectionRoundTrips) {
  RegisterDrawingClasses();
  TBytesStream M(DrawingStream());
  TReader R(&M);
  std::unique_ptr<TComponent> Copy = R.ReadRootComponent();
  auto* D = dynamic_cast<TDrawing*>(Copy.get());
  ASSERT_NE(D, nullptr);
  EXPECT_EQ(D->GetName(), u"Sketch");
  EXPECT_EQ(D->FTitle, u"A title");
  EXPECT_EQ(D->FThumb, (TBytes{9, 8, 7}));
  EXPECT_EQ(D->FLoadedCount, 1);
  ExpectShapes(D->FShapes);
  ASSERT_EQ(D->GetComponentCount(), 1);
  auto* Inner = static_cast<TDrawing*>(D->GetComponent(0));
  EXPECT_EQ(Inner->GetName(), u"Inner");
  EXPECT_TRUE(Inner->FThumb.empty());
  ExpectShapes(Inner->FShapes);
}

TEST(GSpecialFiler, TruncatedAndCorruptedStreamsRaiseOnlyReadErrors) {
  RegisterDrawingClasses();
  const TBytes Valid = DrawingStream();
  auto Read = [](const TBytes& Data) -> int {
    TBytesStream M(Data);
    try {
      TReader R(&M);
      R.ReadRootComponent();
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
