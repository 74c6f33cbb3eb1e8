// KOR_API marks what libKORPlatform exports; all other symbols are hidden.

#ifndef KOREXPORT_H
#define KOREXPORT_H

#define KOR_API __attribute__((visibility("default")))

#if __cplusplus < 202002L
#error "C++20 is needed"
#endif

#endif
