// Counts the allocations of this thread while it lives.

#ifndef TESTS_ALLOCATIONS_H
#define TESTS_ALLOCATIONS_H

class AllocationCounter {
  public:
    AllocationCounter() : start_(Total()) {}
    long Count() const { return Total() - start_; }

  private:
    static long Total();
    long start_;
};

#endif
