#include <gtest/gtest.h>

#include <random>

#include "GStreams/GStreams.h"
#include "GStreams/Drawing.h"
#include "Runtime/FilerFixture.h"

using namespace kztest;

namespace {

// Every kind of property, and shapes of both item classes.
void Draw(TDrawing& D) {
  RegisterFilerTestClasses();
  RegisterClass(TDrawing::ClassInfo());
  D.SetName(u"Sketch");
  Fill(D, 3);
  static_cast<TTag*>(D.FShapes.Add())->FLabel = u"one";
  auto* S = static_cast<TSizedTag*>(D.FShapes.Add(&TSizedTag::ClassInfo()));
  S->FLabel = u"two";
  S->FSize = 2;
  static_cast<TTag*>(D.FShapes.Add())->FLabel = u"three";
}

// A drawing with an empty drawing inside, as stored.
TBytes Sketch() {
  TDrawing D(nullptr);
  Draw(D);
  (new TDrawing(&D))->SetName(u"Inner");
  TBytesStream M;
  TWriter(&M).WriteRootComponent(&D);
  return M.GetBytes();
}

}  // namespace

TEST(GSpecialFiler, ComponentWithItemsOfTwoClassesRoundTrips) {
  TBytesStream M(Sketch());
  std::unique_ptr<TComponent> Copy = TReader(&M).ReadRootComponent();
  auto* D = dynamic_cast<TDrawing*>(Copy.get());
  ASSERT_NE(D, nullptr);
  TDrawing Expected(nullptr);
  Draw(Expected);
  ExpectSame(Expected, *D);
  ExpectSameItems(Expected.FShapes, D->FShapes);
  ASSERT_EQ(D->GetComponentCount(), 1);
  EXPECT_EQ(static_cast<TDrawing*>(D->GetComponent(0))->FShapes.GetCount(), 0);
}

TEST(GSpecialFiler, MissingReaderWriterOrClass) {
  TDrawing D(nullptr);
  Draw(D);
  TBytesStream M;
  TWriter W(&M);
  auto Message = [](const std::function<void()>& F) {
    try {
      F();
    } catch (const EStreamError& E) {
      return E.Message();
    }
    return String();
  };
  EXPECT_EQ(Message([&] { TGSpecialFiler(&W).ReadCollection(&D.FShapes); }), u"No TReader defined for filer");
  EXPECT_EQ(Message([&] { TGSpecialFiler().WriteCollection(&D.FShapes); }), u"No TWriter defined for filer");

  // An unknown class stops the read; the items read before it stay.
  TGSpecialFiler(&W).WriteCollection(&D.FShapes);
  TBytes Stored = M.GetBytes();
  Stored[Stored.find(TBytes{'S', 'i', 'z', 'e', 'd'})] = 'X';
  TBytesStream Bad(Stored);
  TReader R(&Bad);
  EXPECT_THROW(TGSpecialFiler(&R).ReadCollection(&D.FShapes), EClassNotFound);
  EXPECT_EQ(D.FShapes.GetCount(), 1);
  EXPECT_EQ(D.FShapes.GetUpdateCount(), 0);
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
