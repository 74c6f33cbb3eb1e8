// Counts the allocations of a thread, and makes them fail.

#ifndef TESTS_ALLOCATIONS_H
#define TESTS_ALLOCATIONS_H

// Counts the allocations of this thread while it exists.
class AllocationCounter {
  public:
    AllocationCounter() : start_(Total()) {}
    long Count() const { return Total() - start_; }

  private:
    static long Total();
    long start_;
};

// While it exists, the allocation of this thread that follows `succeeding` others fails and, unless
// only once, all later ones.
class FailingAllocations {
  public:
    enum class Extent { Once, FromThenOn };

    FailingAllocations(long succeeding, Extent extent);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    // Whether an allocation has failed.
    bool HaveFailed() const;
};

#endif
