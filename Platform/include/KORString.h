// A small text, as returned by the trace service. The characters are a constant or belong to the
// service: a copy is cheap, and valid as long as the trace scope that returned it.

#ifndef KORSTRING_H
#define KORSTRING_H

class KORString {
  public:
    constexpr KORString(const char* text = "") : text_(text) {}
    constexpr operator const char*() const { return text_; }

  private:
    const char* text_;
};

#endif
