// A pair of small models with random content, and random calls of the functions of the export table
// on them. The randomness comes from a generator or from the input of a fuzzer; the same choices
// produce the same models and calls.

#ifndef TESTS_RANDOMWORLD_H
#define TESTS_RANDOMWORLD_H

#include <span>
#include <string>
#include <vector>

#include "Module.h"
#include "ORXExportTable.h"
#include "script/Session.h"

// A source of choices.
class Choices {
  public:
    virtual ~Choices() = default;
    // A number below `count`, which is positive.
    virtual std::size_t Below(std::size_t count) = 0;
};

struct RandomCall {
    const orx::Export* function;
    std::vector<calls::Argument> arguments;

    // The call and its arguments, for messages.
    std::string ToText(const host::Session& session) const;
};

class RandomWorld {
  public:
    // A database and a STEP model with `instanceCount` instances each. Most values match the
    // schemas, some do not. Document management knows the database's revisions while the world
    // exists; only one world may exist at a time.
    RandomWorld(Choices& choices, std::size_t instanceCount);
    ~RandomWorld();
    RandomWorld(const RandomWorld&) = delete;
    RandomWorld& operator=(const RandomWorld&) = delete;

    const host::Session& Session() const { return session_; }

    // A call of any function, with arguments that are mostly of the kinds that it reads.
    RandomCall AnyCall();
    RandomCall CallOf(const orx::Export& function);

    // A value of any kind; texts resemble those that the functions read.
    SdaiPrimitiveH AnyValue();
    SdaiString Text();

    // Both models as exchange files.
    std::string Content() const;

  private:
    void AddModel(const char* name, const char* schema, std::span<const char* const> types,
                  std::size_t instanceCount);
    SdaiPrimitiveH Argument(orx::Kind kind);
    SdaiPrimitiveH ValueOf(const kor::Domain* domain, int depth);
    SdaiPrimitiveH InstanceOf(const kor::EntityType* entity);
    SdaiPrimitiveH List(const kor::Domain* element, int depth);
    SdaiPrimitiveH Select();
    SdaiPrimitiveH Truth();
    long Integer();
    double Real();
    bool Seldom() { return choices_.Below(16) == 0; }
    template <class Choice, std::size_t N>
    Choice OneOf(const Choice (&candidates)[N]) {
        return candidates[choices_.Below(N)];
    }

    Choices& choices_;
    host::Session session_;
    std::vector<SdaiEntityInstance*> instances_;
};

// The kind of a value in the terms of the export table; Any if only Any includes it.
orx::Kind KindOf(const SdaiPrimitiveH& value);

#endif
