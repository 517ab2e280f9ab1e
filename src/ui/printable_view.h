#pragma once
// A view that File | Print, Print Preview can print.
class QPrinter;

namespace sb {

class printable_view {
public:
    virtual ~printable_view() = default;
    virtual void print(QPrinter& printer) = 0;
};

}  // namespace sb
