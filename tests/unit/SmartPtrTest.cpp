#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "common/RefCount.h"
#include "common/SmartPtr.h"

using CL::CRefCount;
using CL::CSmartPtr;

namespace {

// Counts its destructions; optionally keeps another object alive.
class Tracked : public CRefCount {
public:
    explicit Tracked(int* destroyed) : m_destroyed(destroyed) {}
    CSmartPtr<Tracked> held;

protected:
    ~Tracked() override { ++*m_destroyed; }

private:
    int* m_destroyed;
};

class DerivedTracked : public Tracked {
public:
    DerivedTracked(int* destroyed, int* derivedDestroyed) : Tracked(destroyed), m_derived(derivedDestroyed) {}

protected:
    ~DerivedTracked() override { ++*m_derived; }

private:
    int* m_derived;
};

} // namespace

TEST(CRefCount, NewObjectStartsAtZero)
{
    int destroyed = 0;
    Tracked* raw = new Tracked(&destroyed);
    EXPECT_EQ(raw->RefCount(), 0);
    CSmartPtr<Tracked> owner(raw);   // takes ownership of the raw object
    EXPECT_EQ(raw->RefCount(), 1);
}

TEST(CRefCount, ReleaseFromOneToZeroDeletesThroughVirtualDestructor)
{
    int destroyed = 0, derivedDestroyed = 0;
    CRefCount* base = new DerivedTracked(&destroyed, &derivedDestroyed);
    EXPECT_EQ(base->AddRef(), 1);
    EXPECT_EQ(base->AddRef(), 2);
    EXPECT_EQ(base->Release(), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(base->Release(), 0);
    EXPECT_EQ(derivedDestroyed, 1);
    EXPECT_EQ(destroyed, 1);
}

TEST(CRefCount, CopyOfObjectStartsUnowned)
{
    int destroyed = 0;
    CSmartPtr<Tracked> a = CSmartPtr<Tracked>::Make(&destroyed);
    CSmartPtr<Tracked> b = a;
    EXPECT_EQ(a->RefCount(), 2);
    struct Plain : CRefCount {};
    CSmartPtr<Plain> p = CSmartPtr<Plain>::Make();
    CSmartPtr<Plain> q = CSmartPtr<Plain>::Make(*p);
    EXPECT_EQ(q->RefCount(), 1);
    EXPECT_EQ(p->RefCount(), 1);
}

TEST(CSmartPtr, CopiesShareTheObject)
{
    int destroyed = 0;
    CSmartPtr<Tracked> a = CSmartPtr<Tracked>::Make(&destroyed);
    {
        CSmartPtr<Tracked> b = a;
        EXPECT_EQ(a.get(), b.get());
        EXPECT_EQ(a->RefCount(), 2);
    }
    EXPECT_EQ(a->RefCount(), 1);
    EXPECT_EQ(destroyed, 0);
}

TEST(CSmartPtr, ObjectDiesWithLastPointer)
{
    int destroyed = 0;
    {
        CSmartPtr<Tracked> a = CSmartPtr<Tracked>::Make(&destroyed);
        CSmartPtr<Tracked> b = a;
        a = nullptr;
        EXPECT_EQ(destroyed, 0);
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(CSmartPtr, AssignmentTakesNewReferenceBeforeReleasingOld)
{
    // The only reference to `inner` is held by `outer`; assigning inner to
    // the pointer that owns outer destroys outer, which would take inner
    // with it if the old object were released first.
    int outerDestroyed = 0, innerDestroyed = 0;
    CSmartPtr<Tracked> p = CSmartPtr<Tracked>::Make(&outerDestroyed);
    p->held = CSmartPtr<Tracked>::Make(&innerDestroyed);
    Tracked* inner = p->held.get();
    p = inner;
    EXPECT_EQ(outerDestroyed, 1);
    EXPECT_EQ(innerDestroyed, 0);
    ASSERT_EQ(p.get(), inner);
    EXPECT_EQ(p->RefCount(), 1);
}

TEST(CSmartPtr, SelfAssignmentKeepsTheObject)
{
    int destroyed = 0;
    CSmartPtr<Tracked> p = CSmartPtr<Tracked>::Make(&destroyed);
    CSmartPtr<Tracked>& same = p;
    p = same;
    p = p.get();
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(p->RefCount(), 1);
}

TEST(CSmartPtr, MoveLeavesTheSourceEmptyAndTheCountAlone)
{
    int destroyed = 0;
    CSmartPtr<Tracked> a = CSmartPtr<Tracked>::Make(&destroyed);
    CSmartPtr<Tracked> b = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(b->RefCount(), 1);
    CSmartPtr<Tracked> c;
    c = std::move(b);
    EXPECT_FALSE(b);
    EXPECT_EQ(c->RefCount(), 1);
    EXPECT_EQ(destroyed, 0);
}

TEST(CSmartPtr, PointerToDerivedConvertsToPointerToBase)
{
    int destroyed = 0, derivedDestroyed = 0;
    CSmartPtr<DerivedTracked> derived = CSmartPtr<DerivedTracked>::Make(&destroyed, &derivedDestroyed);
    CSmartPtr<Tracked> base = derived;
    EXPECT_EQ(base->RefCount(), 2);
    derived = nullptr;
    base = nullptr;
    EXPECT_EQ(derivedDestroyed, 1);
}

TEST(CSmartPtr, AccessToMissingObjectThrowsEPointer)
{
    CSmartPtr<Tracked> empty;
    try {
        empty->RefCount();
        FAIL() << "no exception";
    } catch (const CL::CException& e) {
        EXPECT_EQ(e.Error(), E_POINTER);
    }
}

TEST(CSmartPtr, CountsStayExactUnderConcurrentCopies)
{
    int destroyed = 0;
    CSmartPtr<Tracked> shared = CSmartPtr<Tracked>::Make(&destroyed);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&shared] {
            for (int i = 0; i < 50000; ++i) {
                CSmartPtr<Tracked> copy = shared;
                CSmartPtr<Tracked> another;
                another = copy;
            }
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(shared->RefCount(), 1);
    shared = nullptr;
    EXPECT_EQ(destroyed, 1);
}
