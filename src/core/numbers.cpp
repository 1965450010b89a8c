#include "core/numbers.h"

#include <math.h>

static bool ends_number(char c)
{
    return c == 0 || c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

static bool within_limit(int32_t index, int32_t limit)
{
    return limit < 0 || index < limit;
}

int parse_int(const char* text, int32_t limit, int32_t* out)
{
    int32_t i = 0;
    bool negative = false;
    if (within_limit(0, limit) && text[0] == '-') {
        negative = true;
        i = 1;
    }
    uint32_t value = 0; // unsigned, so that overflow wraps as the format allows
    for (; within_limit(i, limit) && !ends_number(text[i]); ++i) {
        char c = text[i];
        if (c < '0' || c > '9')
            return 0;
        value = value * 10u + static_cast<uint32_t>(c - '0');
    }
    *out = static_cast<int32_t>(negative ? 0u - value : value);
    return 1;
}

int parse_float(const char* text, int32_t limit, float* out)
{
    int32_t i = 0;
    float sign = 1.0f;
    if (within_limit(0, limit) && text[0] == '-') {
        sign = -1.0f;
        i = 1;
    }
    float whole = 0.0f, fraction = 0.0f, divisor = 1.0f;
    bool after_point = false;
    for (; within_limit(i, limit) && !ends_number(text[i]); ++i) {
        char c = text[i];
        if (c == '.') {
            after_point = true;
        } else if (c >= '0' && c <= '9') {
            float digit = static_cast<float>(c - '0');
            if (after_point) {
                fraction = fraction * 10.0f + digit;
                divisor = divisor * 10.0f;
            } else {
                whole = whole * 10.0f + digit;
            }
        } else {
            return 0;
        }
    }
    *out = (fraction / divisor + whole) * sign;
    return 1;
}

float ping_pong(float a, float b, float x)
{
    float d = b - a;
    float m = fmodf(x, 2.0f * d);
    if (m < d)
        return a + m;
    return b - (m - d);
}

int32_t truncate_to_int32(float value)
{
    if (!(value > -2147483904.0f && value < 2147483648.0f))
        return INT32_MIN;
    return static_cast<int32_t>(value);
}
