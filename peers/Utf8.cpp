#include "peers/Utf8.h"

namespace kelvo {

std::size_t lengthOfFirstCharacter(std::string_view text) {
    struct Form {
        unsigned char first;
        unsigned char last;
        unsigned char secondFrom;
        unsigned char secondTo;
        std::size_t length;
    };
    // The valid second bytes, which excludes overlong forms, surrogates and code points beyond the last plane.
    constexpr Form kForms[] = {
        {0x00, 0x7F, 0x00, 0xFF, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
    };
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    if (text.empty()) return 0;
    for (const Form& form : kForms) {
        if (byteAt(0) < form.first || byteAt(0) > form.last) continue;
        if (text.size() < form.length) return 0;
        if (form.length > 1 && (byteAt(1) < form.secondFrom || byteAt(1) > form.secondTo)) return 0;
        for (std::size_t i = 2; i < form.length; ++i) {
            if ((byteAt(i) & 0xC0U) != 0x80U) return 0;
        }
        return form.length;
    }
    return 0;
}

} // namespace kelvo
