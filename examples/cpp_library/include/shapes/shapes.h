#pragma once

#include <memory>
#include <vector>

namespace shapes {

class Shape {
  public:
    virtual ~Shape() = default;
    virtual double area() const = 0;
};

std::unique_ptr<Shape> square(double side);
std::unique_ptr<Shape> rectangle(double width, double height);

double totalArea(const std::vector<std::unique_ptr<Shape>>& all);

}  // namespace shapes
