#include <gtest/gtest.h>

#include "Runtime/Runtime.h"

using namespace kz;

namespace {

// A small family with a virtual constructor taking one argument.
class TShape : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TShape, int>;
  KZ_CLASS(TShape, TPersistent)
 public:
  explicit TShape(int ASize) : Size(ASize) {}
  virtual String Kind() const = 0;
  int Size;
};

class TSquare : public TShape {
  KZ_CLASS(TSquare, TShape)
 public:
  using TShape::TShape;
  String Kind() const override { return u"square"; }
  void Assign(TPersistent* Source) override {
    if (auto* S = dynamic_cast<TSquare*>(Source)) {
      Size = S->Size;
      return;
    }
    inherited::Assign(Source);
  }
};

class TCircle : public TShape {
  KZ_CLASS(TCircle, TShape)
 public:
  using TShape::TShape;
  String Kind() const override { return u"circle"; }
};

using TShapeClass = const TShape::TMeta*;

}  // namespace

TEST(ObjectModel, MetaclassesNameParentsAndCreateTheDescribedClass) {
  TSquare Sq(3);
  EXPECT_EQ(Sq.ClassName(), u"TSquare");
  EXPECT_EQ(Sq.ClassType(), &TSquare::ClassInfo());
  EXPECT_EQ(TSquare::ClassInfo().ClassParent(), &TShape::ClassInfo());
  EXPECT_TRUE(Sq.InheritsFrom(&TPersistent::ClassInfo()));
  EXPECT_TRUE(Sq.InheritsFrom(&TObject::ClassInfo()));
  EXPECT_FALSE(Sq.InheritsFrom(&TCircle::ClassInfo()));

  // A class reference of the family makes an instance of the very class it names.
  TShapeClass Classes[] = {&TSquare::ClassInfo(), &TCircle::ClassInfo()};
  EXPECT_EQ(Classes[1]->Create(7)->Kind(), u"circle");
  EXPECT_EQ(Classes[0]->Create(7)->Size, 7);
  EXPECT_FALSE(TShape::ClassInfo().CanCreate());
  EXPECT_THROW(TShape::ClassInfo().Create(1), EAbstractError);
}

TEST(ObjectModel, RegistryFindsByNameAndRejectsUnknownOrClashingNames) {
  RegisterClass(TSquare::ClassInfo());
  RegisterClass(TSquare::ClassInfo());  // again: harmless
  EXPECT_EQ(&FindClass(u"TSquare"), &TSquare::ClassInfo());
  EXPECT_EQ(GetClass(u"TNoSuchClass"), nullptr);
  try {
    FindClass(u"TNoSuchClass");
    FAIL();
  } catch (const EClassNotFound& E) {
    EXPECT_EQ(E.Message(), u"Class TNoSuchClass not found");
  }
  static const TMetaClass Impostor(u"TSquare", nullptr);
  EXPECT_THROW(RegisterClass(Impostor), EFilerError);
  UnRegisterClass(TSquare::ClassInfo());
  EXPECT_EQ(GetClass(u"TSquare"), nullptr);
}

TEST(ObjectModel, AssignFallsBackToTheAssignErrorNamingBothClasses) {
  TSquare A(1), B(9);
  A.Assign(&B);
  EXPECT_EQ(A.Size, 9);
  TCircle C(2);
  try {
    C.Assign(&A);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"Cannot assign a TSquare to a TCircle");
  }
  try {
    C.Assign(nullptr);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"Cannot assign a nil to a TCircle");
  }
}

TEST(ObjectModel, CheckedCastRaisesInvalidCast) {
  TSquare Sq(1);
  TObject* O = &Sq;
  EXPECT_EQ(As<TShape>(O), &Sq);
  EXPECT_EQ(As<TShape>(static_cast<TObject*>(nullptr)), nullptr);
  EXPECT_THROW(As<TCircle>(O), EInvalidCast);
}

TEST(Errors, MessagesGoThroughTheTranslationHookAndFormatArguments) {
  try {
    throw EListError(Runtime::SListIndexError, {42});
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), u"List index out of bounds (42)");
    EXPECT_STREQ(E.what(), "List index out of bounds (42)");
  }
  auto Hook = [](const TResourceString& R) -> const char16_t* {
    return std::string_view(R.Name) == "SListIndexError" ? u"Index hors limites (%d)" : nullptr;
  };
  TTranslationHook Old = SetTranslationHook(Hook);
  EXPECT_EQ(EListError(Runtime::SListIndexError, {3}).Message(), u"Index hors limites (3)");
  EXPECT_EQ(EListError(Runtime::SSortedListError).Message(), u"Operation not allowed on sorted list");
  SetTranslationHook(Old);
  EXPECT_EQ(EListError(Runtime::SListIndexError, {3}).Message(), u"List index out of bounds (3)");
  // UTF-8 text of non-ASCII messages.
  EXPECT_STREQ(Exception(String(u"caf\u00e9")).what(), "caf\xc3\xa9");
}
