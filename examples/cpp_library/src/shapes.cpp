#include "shapes/shapes.h"

namespace shapes {

namespace {

class Rectangle : public Shape {
  public:
    Rectangle(double width, double height) : width_(width), height_(height) {}
    double area() const override { return width_ * height_; }

  private:
    double width_;
    double height_;
};

}  // namespace

std::unique_ptr<Shape> square(double side) {
    return rectangle(side, side);
}

std::unique_ptr<Shape> rectangle(double width, double height) {
    return std::make_unique<Rectangle>(width, height);
}

double totalArea(const std::vector<std::unique_ptr<Shape>>& all) {
    double sum = 0;
    for (const auto& shape : all) {
        sum += shape->area();
    }
    return sum;
}

}  // namespace shapes
