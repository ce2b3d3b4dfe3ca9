// Reading numbers and letters out of instrument texts the way the C library's scanf
// reads them with a fixed format, but independent of the process locale: '.' is the
// decimal point for every user.
#pragma once

#include <initializer_list>

namespace kiv_scan {

// One conversion target; the kind follows the variable's type: int for %d, float for
// %f, double for %lf, wchar_t for %c.
class Field {
public:
    Field(int& v) : kind_(Kind::Int), target_(&v) {}
    Field(float& v) : kind_(Kind::Float), target_(&v) {}
    Field(double& v) : kind_(Kind::Double), target_(&v) {}
    Field(wchar_t& v) : kind_(Kind::Char), target_(&v) {}

    enum class Kind { Int, Float, Double, Char };
    Kind kind() const { return kind_; }
    void* target() const { return target_; }

private:
    Kind kind_;
    void* target_;
};

// Reads `text` with `format`: %d, %f, %lf and %c take the next field in order (a
// directive whose field is of another kind stops the scan), a blank matches any run of
// blanks including none, any other character matches itself. Returns the number of
// fields stored, or -1 when the text ended before the first conversion, as scanf does.
int Scan(const wchar_t* text, const wchar_t* format, std::initializer_list<Field> fields);

}  // namespace kiv_scan
