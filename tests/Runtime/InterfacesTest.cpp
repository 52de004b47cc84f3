#include <gtest/gtest.h>

#include "CommonInterfaces/CommonInterfaces.h"
#include "Runtime/Runtime.h"

using namespace kz;

namespace {

int GAlive = 0;

class ICounter : public virtual IInterface {
  KZ_INTERFACE(ICounter, IInterface, "{6A1D3C10-7B7E-4F0B-9C1B-5D2D3F0A1B01}")
 public:
  virtual int Next() = 0;
};

class IResettableCounter : public virtual ICounter {
  KZ_INTERFACE(IResettableCounter, ICounter, "{6A1D3C10-7B7E-4F0B-9C1B-5D2D3F0A1B02}")
 public:
  virtual void Restart() = 0;
};

class TCounter : public TInterfacedObject, public IResettableCounter, public IIterator {
  KZ_CLASS(TCounter, TInterfacedObject)
  KZ_INTERFACES(IResettableCounter, IIterator)
 public:
  TCounter() { ++GAlive; }
  ~TCounter() override { --GAlive; }
  int Next() override { return ++N; }
  void Restart() override { N = 0; }
  Pointer CurrentElement() override { return nullptr; }
  std::int32_t GetCount() override { return N; }
  bool HasMoreElements() override { return false; }
  Pointer NextElement() override { return nullptr; }
  void Reset() override {}
  int N = 0;
};

}  // namespace

TEST(Interfaces, GuidsParseAndCompare) {
  constexpr TGUID G = TGUID::Parse("{F83E4161-A296-11D3-B992-00C04F8EDA5F}");
  static_assert(G.D1 == 0xF83E4161 && G.D2 == 0xA296 && G.D3 == 0x11D3 && G.D4[0] == 0xB9 && G.D4[7] == 0x5F);
  static_assert(G == IIterator::IID);
  static_assert(!(IIterator::IID == IStringIterator::IID));
}

TEST(Interfaces, LastReleaseFreesTheObjectExactlyOnce) {
  {
    TIntfPtr<ICounter> A = new TCounter;
    EXPECT_EQ(GAlive, 1);
    TIntfPtr<ICounter> B = A;
    EXPECT_EQ(A->Next(), 1);
    EXPECT_EQ(B->Next(), 2);
    A.reset();
    EXPECT_EQ(GAlive, 1);
    TIntfPtr<ICounter> C = std::move(B);
    EXPECT_FALSE(B);
    EXPECT_EQ(GAlive, 1);
  }
  EXPECT_EQ(GAlive, 0);
}

TEST(Interfaces, QueryFindsListedInterfacesAndTheirParents) {
  TIntfPtr<IResettableCounter> R = new TCounter;
  TIntfPtr<ICounter> C = Query<ICounter>(R);
  ASSERT_TRUE(C);
  C->Next();
  TIntfPtr<IIterator> It = Query<IIterator>(C);
  ASSERT_TRUE(It);
  EXPECT_EQ(It->Count(), 1);
  EXPECT_TRUE(It == C);  // same object identity
  EXPECT_FALSE(Query<IStringIterator>(R));
  EXPECT_TRUE(Supports(R, IInterface::IID));
  EXPECT_FALSE(Supports(R, IObjectIterator::IID));
  void* Obj = reinterpret_cast<void*>(1);
  EXPECT_EQ(static_cast<IInterface*>(R.get())->QueryInterface(IObjectIterator::IID, &Obj), E_NOINTERFACE);
  EXPECT_EQ(Obj, nullptr);
  // A fresh object at count zero survives a Supports test.
  auto* Fresh = new TCounter;
  EXPECT_TRUE(Supports(static_cast<ICounter*>(Fresh), ICounter::IID));
  EXPECT_EQ(Fresh->RefCount(), 0);
  TIntfPtr<ICounter> Own = Fresh;
  R.reset();
  C.reset();
  It.reset();
  Own.reset();
  EXPECT_EQ(GAlive, 0);
}

TEST(Interfaces, NullReferenceRaisesAccessViolation) {
  TIntfPtr<ICounter> Empty;
  EXPECT_THROW(Empty->Next(), EAccessViolation);
}
