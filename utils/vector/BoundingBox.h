// BoundingBox: an axis-parallel box in image or view coordinates, stored as left
// (smallest x), top (largest y), right (largest x), bottom (smallest y).
#pragma once

#include <algorithm>

struct BoundingBox {
    // The empty box that widening starts from: invalid, since right < left.
    double left = 0.0;
    double top = -1.0;
    double right = -1.0;
    double bottom = 0.0;

    BoundingBox() = default;
    BoundingBox(double l, double t, double r, double b) : left(l), top(t), right(r), bottom(b) {}

    double getWidth() const { return right - left; }
    double getHeight() const { return top - bottom; }
    bool isValid() const { return left <= right && bottom <= top; }

    // Widening an invalid box by any box copies that box; a valid box ignores an invalid
    // one; otherwise the union.
    void widen(const BoundingBox& other) {
        if (!isValid()) {
            *this = other;
        } else if (other.isValid()) {
            left = std::min(left, other.left);
            bottom = std::min(bottom, other.bottom);
            right = std::max(right, other.right);
            top = std::max(top, other.top);
        }
    }
    void widen(double x, double y) { widen(BoundingBox(x, y, x, y)); }

    bool contains(double x, double y) const { return x >= left && x <= right && y >= bottom && y <= top; }
    bool intersects(const BoundingBox& other) const {
        return isValid() && other.isValid() && other.left <= right && other.right >= left && other.bottom <= top &&
               other.top >= bottom;
    }
    BoundingBox inflated(double by) const { return {left - by, top + by, right + by, bottom - by}; }
};
