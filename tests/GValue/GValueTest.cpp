#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "GValue/GValue.h"
#include "Runtime/Runtime.h"

using namespace kz;

namespace {

class TValueIntf : public TInterfacedObject {
  KZ_CLASS(TValueIntf, TInterfacedObject)
};

class TSubValue : public TGValue {
  KZ_CLASS(TSubValue, TGValue)
};

String MessageOf(const std::function<void()>& Call) {
  try {
    Call();
  } catch (const Exception& E) {
    return E.Message();
  }
  return u"<no exception>";
}

const String Unassigned = u"Value is unassigned", Converting = u"Error converting value";

}  // namespace

TEST(GValueTest, UnassignedValuesRaiseOnEveryRead) {
  TGValue V;
  for (const auto& Read : std::vector<std::function<void()>>{
           [&] { (void)V.GetAsInteger(); }, [&] { (void)V.GetAsBoolean(); }, [&] { (void)V.GetAsChar(); },
           [&] { (void)V.GetAsFloat(); }, [&] { (void)V.GetAsString(); }, [&] { (void)V.GetAsPointer(); },
           [&] { (void)V.GetAsObject(); }, [&] { (void)V.GetAsClass(); }, [&] { (void)V.GetAsCurrency(); },
           [&] { (void)V.GetAsVariant(); }, [&] { (void)V.GetAsInterface(); },
           [&] { (void)V.GetAsWideString(); }, [&] { (void)V.GetAsPChar(); }})
    EXPECT_EQ(MessageOf(Read), Unassigned);
  TGValue FromArg(TVarRec(7));  // keeps the datum, still unassigned
  EXPECT_EQ(MessageOf([&] { (void)FromArg.GetAsInteger(); }), Unassigned);
  EXPECT_EQ(MessageOf([&] { (void)V.Equals(TGValue()); }), Unassigned);
  FromArg.AssignVarRec(TVarRec(8));
  EXPECT_EQ(FromArg.GetAsInteger(), 8);
}

TEST(GValueTest, NumbersBooleansAndCharacters) {
  TGValue V;
  V.SetAsInteger(5);
  EXPECT_EQ(V.GetAsString(), u"5");
  EXPECT_TRUE(V.GetAsBoolean());
  EXPECT_EQ(V.GetAsCurrency(), 50000);
  V.SetAsInteger(0x141);
  EXPECT_EQ(V.GetAsChar(), 'A');  // the low byte of the code

  const std::tuple<float, int, const char16_t*> Floats[] = {{2.5f, 2, u"2.5"}, {3.5f, 4, u"3.5"}, {-2.5f, -2, u"-2.5"}};
  for (auto [In, Int, Text] : Floats) {
    V.SetAsFloat(In);
    EXPECT_EQ(V.GetAsInteger(), Int);  // half to even
    EXPECT_EQ(V.GetAsString(), Text);
  }
  for (float Bad : {3e9f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::max()}) {
    V.SetAsFloat(Bad);
    EXPECT_THROW((void)V.GetAsInteger(), EConvertError);
    if (Bad != 3e9f) {
      EXPECT_THROW((void)V.GetAsCurrency(), EConvertError);
    }
  }
  V.SetAsCurrency(123456789012345);  // single precision: about seven digits survive
  EXPECT_NE(V.GetAsCurrency(), 123456789012345);

  V.SetAsBoolean(true);
  EXPECT_EQ(V.GetAsChar(), 'T');
  EXPECT_EQ(V.GetAsString(), u"True");
  V.SetAsChar('\xE9');
  EXPECT_EQ(V.GetAsInteger(), 0xE9);
  EXPECT_EQ(V.GetAsString(), u"\u00E9");
}

TEST(GValueTest, Text) {
  TGValue V;
  V.SetAsString(u"4 2");
  EXPECT_EQ(MessageOf([&] { (void)V.GetAsInteger(); }), u"'4 2' is not a valid integer value");
  V.SetAsString(u"1e300");
  EXPECT_EQ(V.GetAsFloat(), std::numeric_limits<float>::infinity());
  const std::pair<const char16_t*, int> Words[] = {{u"t", 1}, {u"TRUE", 1}, {u"faLSE", 0}, {u"yes", -1}, {u"1", -1}};
  for (auto [Text, Expected] : Words) {
    V.SetAsString(Text);
    if (Expected < 0)
      EXPECT_EQ(MessageOf([&] { (void)V.GetAsBoolean(); }), Converting);
    else
      EXPECT_EQ(V.GetAsBoolean(), Expected == 1);
  }
  V.SetAsString(u"");
  EXPECT_EQ(MessageOf([&] { (void)V.GetAsChar(); }), Converting);
  V.SetAsString(u"self");
  V.SetAsString(V.GetAsString());  // text taken from the value itself
  EXPECT_EQ(String(V.GetAsPChar()), u"self");

  V.AssignVarRec(TVarRec::ShortString("sh\xF6rt"));
  EXPECT_EQ(V.GetAsWideString(), u"sh\u00F6rt");
  V.AssignVarRec(TVarRec::PWideChar(u"pw"));
  EXPECT_THROW((void)V.GetAsString(), EConvertError);  // no reader takes this kind
}

TEST(GValueTest, ReferencesAndClasses) {
  TGValue V;
  TValueIntf* Obj = new TValueIntf;
  TIntfPtr<IInterface> Intf(Obj);
  V.SetAsObject(Obj);
  EXPECT_EQ(V.GetAsString(), u"TValueIntf");
  EXPECT_EQ(MessageOf([&] { (void)V.GetAsClass(); }), Converting);
  EXPECT_EQ(V.GetAsInterface(), Intf);
  V.SetAsObject(nullptr);
  EXPECT_THROW((void)V.GetAsString(), EAccessViolation);

  V.SetAsInterface(Intf);
  EXPECT_EQ(Obj->RefCount(), 2);
  EXPECT_EQ(V.GetAsObject(), Obj);
  V.SetAsInteger(1);  // the reference goes with the old datum
  EXPECT_EQ(Obj->RefCount(), 1);

  V.SetAsClass(&TSubValue::ClassInfo());
  EXPECT_EQ(V.GetAsString(), u"TSubValue");
  EXPECT_THROW((void)V.GetAsObject(), EConvertError);
  int Local = 0;
  V.SetAsPointer(&Local);
  EXPECT_THROW((void)V.GetAsInterface(), EConvertError);  // a word is never taken for an interface
}

TEST(GValueTest, VariantsByTypeCode) {
  TGValue V;
  int Word = 0;
  const std::tuple<TVariant, TValueType, const char16_t*> Cases[] = {
      {TVariant(std::int16_t{-3}), vtInteger, u"-3"},
      {TVariant::FromCurrency(25000), vtFloat, u"2.5"},
      {TVariant(true), vtBoolean, u"True"},
      {TVariant(), vtAnsiString, u""},
      {TVariant(std::int64_t{1} << 40), vtAnsiString, u"1099511627776"},
      {TVariant::FromDataWord(varArray, &Word), vtPointer, u""}};
  for (const auto& [In, Kind, Text] : Cases) {
    V.SetAsVariant(In);
    EXPECT_EQ(V.GetValueType(), Kind);
    if (Kind != vtPointer) {
      EXPECT_EQ(V.GetAsString(), Text);
    }
  }
  EXPECT_EQ(V.GetAsPointer(), &Word);
  EXPECT_THROW(V.SetAsVariant(TVariant::FromDataWord(varArray | varInteger, &Word)), EConvertError);

  V.AssignVarRec(TVariant(12));
  EXPECT_EQ(V.GetAsChar(), '\x0C');
  V.AssignVarRec(std::int64_t{0x100000002});
  EXPECT_EQ(V.GetAsInteger(), 2);
  EXPECT_EQ(V.GetAsString(), u"4294967298");
  EXPECT_EQ(V.GetAsVariant().VarType(), varInt64);
}

TEST(GValueTest, EqualsAssignAndClone) {
  TGValue A, B;
  A.SetAsFloat(1.2f);
  B.SetAsFloat(1.4f);
  EXPECT_TRUE(A.Equals(B));  // non-text kinds compare as integers
  B.SetAsInteger(1);
  EXPECT_FALSE(A.Equals(B));  // kinds differ
  A.SetAsString(u"1");
  B.SetAsString(u"01");
  EXPECT_FALSE(A.Equals(B));  // text kinds compare as text

  TSubValue Sub;
  Sub.SetAsWideString(u"w");
  std::unique_ptr<TGCustomValue> Copy = Sub.Clone();
  EXPECT_EQ(Copy->ClassType(), &TSubValue::ClassInfo());
  EXPECT_TRUE(Copy->Equals(Sub));
  EXPECT_EQ(&Sub.Clone(A), &A);
  EXPECT_EQ(A.GetValueType(), vtWideString);
  A.Assign(nullptr);
  B.Assign(&A);
  EXPECT_TRUE(B.GetUnassigned());
}
