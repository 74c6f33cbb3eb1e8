// What libKORPlatform offers to other libraries and programs is marked KOR_API; all else in it is
// hidden.

#ifndef KOREXPORT_H
#define KOREXPORT_H

#define KOR_API __attribute__((visibility("default")))

#endif
