#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "Runtime/FilerFixture.h"

using namespace kztest;

namespace {

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
  EXPECT_EQ(M.GetMemory()[3], vaInt8);  // -128
  M.SetPosition(0);
  TReader R(&M);
  R.ReadListBegin();
  for (std::int64_t I : Ints) EXPECT_EQ(R.ReadInt64(), I);
  EXPECT_TRUE(std::signbit(R.ReadFloat()));
  EXPECT_EQ(R.ReadFloat(), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(R.ReadBoolean());
  EXPECT_EQ(R.ReadString(), u"");
  EXPECT_EQ(R.ReadString(), u"\u00fc\U0001F600");
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
  EXPECT_EQ(ReadError(M, [](TReader& R) { R.SkipValue(), R.ReadValue(); }), "Unexpected end of stream");
}

TEST(Filer, ComponentTreeRoundTripWithPublishedAndDefinedProperties) {
  RegisterFilerTestClasses();
  TGadget Root(nullptr);
  Root.SetName(u"Root");
  Fill(Root, 3);
  auto* Child = new TGadget(&Root);
  Child->SetName(u"Child");
  Fill(*Child, 4);
  (new TGadget(Child))->SetName(u"Grandchild");

  TMemoryStream M;
  TWriter(&M).WriteRootComponent(&Root);
  const std::int64_t Written = M.GetSize();
  M.SetPosition(0);
  GLoadedOrder.clear();
  std::unique_ptr<TComponent> Copy = TReader(&M).ReadRootComponent();
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

  TGadget Into(nullptr);  // reading into an existing root of the same class
  M.SetPosition(0);
  TReader(&M).ReadRootComponent(&Into);
  ExpectSame(Root, Into);

  std::vector<String> Names;  // published properties come parents' first
  for (const TPropInfo& P : GetPropList(&TSizedTag::ClassInfo())) Names.push_back(P.Name);
  EXPECT_EQ(Names, (std::vector<String>{u"Label", u"Size"}));
}

TEST(Filer, ReadErrorsNameWhatWentWrong) {
  RegisterFilerTestClasses();
  using TWrite = std::function<void(TWriter&)>;
  // What reading raises from the bytes Write stored, with byte At replaced by Patch.
  auto Error = [](const TWrite& Write, std::function<void(TReader&)> Read = nullptr, int At = -1, Byte Patch = 0) {
    TMemoryStream M;
    TWriter W(&M);
    Write(W);
    if (At >= 0) M.GetMemory()[At] = Patch;
    return ReadError(M, Read ? Read : [](TReader& R) { R.ReadRootComponent(); });
  };
  auto Stored = [](StringView Class, const TWrite& Props) {
    return [=](TWriter& W) {
      W.WriteSignature();
      W.WriteString(Class);
      W.WriteString(u"X");
      Props(W);
    };
  };
  const TWrite None = [](TWriter&) {};
  EXPECT_EQ(Error(Stored(u"TGadget", [](TWriter& W) { W.WritePropName(u"Colour"), W.WriteInteger(1); })),
            "Property Colour does not exist");
  EXPECT_EQ(Error(Stored(u"TGadget", [](TWriter& W) { W.WritePropName(u"count"), W.WriteInteger(-1); })),
            "Error reading TGadget.count: List count out of bounds (-1)");  // names match case-insensitively
  EXPECT_EQ(Error(Stored(u"TGadget",
                         [](TWriter& W) {
                           W.WritePropName(u"Obsolete"), W.WriteInteger(5);
                           W.WritePropName(u"Tags"), W.WriteString(u"not a collection");
                         })),
            "Invalid value for property Tags");
  EXPECT_EQ(Error(Stored(u"TGadget", None)), "Unexpected end of stream");
  TGadget Other(nullptr);
  EXPECT_EQ(Error(Stored(u"TComponent", None), [&](TReader& R) { R.ReadRootComponent(&Other); }),
            "Stream holds a TComponent, not a TGadget");
  // Nesting is bounded whatever the data says; a huge announced length fails on the
  // missing bytes, not on memory.
  EXPECT_EQ(Error([](TWriter& W) { for (int i = 0; i < 2000; ++i) W.WriteListBegin(); },
                  [](TReader& R) { R.SkipValue(); }),
            "Stream nesting deeper than 512 levels");
  EXPECT_EQ(Error([](TWriter& W) { W.WriteString(u"abc"); }, [](TReader& R) { R.ReadString(); }, 4, 0x7F),
            "Unexpected end of stream");

  TMemoryStream M;
  TWriter W(&M);
  EXPECT_THROW(W.WritePropName(u""), EWriteError);
  EXPECT_THROW(W.WritePropName(String(256, u'x')), EWriteError);
}
