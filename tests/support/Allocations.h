// Counting the allocations of a thread, and making them fail.

#ifndef TESTS_ALLOCATIONS_H
#define TESTS_ALLOCATIONS_H

// Counts the allocations of this thread while it lives.
class AllocationCounter {
  public:
    AllocationCounter() : start_(Total()) {}
    long Count() const { return Total() - start_; }

  private:
    static long Total();
    long start_;
};

// While it lives, an allocation of this thread fails: the one that comes after `succeeding` others,
// and, unless it fails once, all those that follow.
class FailingAllocations {
  public:
    enum class Extent { Once, FromThenOn };

    FailingAllocations(long succeeding, Extent extent);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    // Whether one has failed yet.
    bool HaveFailed() const;
};

#endif
