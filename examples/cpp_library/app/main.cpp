#include <iostream>

#include "shapes/shapes.h"

int main() {
    std::vector<std::unique_ptr<shapes::Shape>> all;
    all.push_back(shapes::square(3));
    all.push_back(shapes::rectangle(2, 4));
    std::cout << "total area " << shapes::totalArea(all) << "\n";
}
