// Choices determined by a seed.

#ifndef TESTS_SEEDEDCHOICES_H
#define TESTS_SEEDEDCHOICES_H

#include <random>

#include "RandomWorld.h"

class SeededChoices final : public Choices {
  public:
    explicit SeededChoices(std::uint64_t seed) : random_(seed) {}
    std::size_t Below(std::size_t count) override { return random_() % count; }

  private:
    std::mt19937_64 random_;
};

// Functions whose result differs on every call.
inline bool IsUnique(const orx::Export& function) {
    return function.name == "GetUniqId" || function.name == "ORX_GetModelId_Exp";
}

// Functions that create instances.
inline bool CreatesInstances(const orx::Export& function) {
    return function.name == "BuildDatedEff" || function.name == "GetStartDate" ||
           function.name == "GetEndDate";
}

// Functions that remember earlier arguments.
inline bool KeepsVersions(const orx::Export& function) { return function.unit == "Version"; }

#endif
