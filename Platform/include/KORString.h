// A small text of the platform's, as the trace service returns it. Its text is a constant or
// belongs to the service: copied freely, valid as long as the service's scope that gave it.

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
