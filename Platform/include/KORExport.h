// KOR_API marks what libKORPlatform exports; all other symbols are hidden.

#ifndef KOREXPORT_H
#define KOREXPORT_H

#define KOR_API __attribute__((visibility("default")))

// The private members of the contract's classes are the layout of the stand-alone platform, and so
// are the classes of namespace kor, declared here, that they name: another platform has its own.
namespace kor {
class AggregateAccess;
class HandleAccess;
class MemberIndex;
class TextAccess;
struct TypedValue;
}  // namespace kor

#if __cplusplus < 202002L
#error "C++20 is needed"
#endif

#endif
