// The C library's formatting of numbers in the "C" locale, whatever the locale of the process.

#ifndef SECOND_NUMBERS_H
#define SECOND_NUMBERS_H

#include <clocale>

namespace second {

// Sets the "C" locale for this thread while it exists.
class PlainLocale {
  public:
    PlainLocale() : plain_(newlocale(LC_ALL_MASK, "C", nullptr)), before_(uselocale(plain_)) {}
    ~PlainLocale() {
        uselocale(before_);
        freelocale(plain_);
    }
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;

  private:
    locale_t plain_;
    locale_t before_;
};

}  // namespace second

#endif
