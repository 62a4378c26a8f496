#include "loader/addon/AddOn.h"

namespace veltra::vtkfile {

AddOn& addOn() {
    static AddOn instance;
    return instance;
}

} // namespace veltra::vtkfile
