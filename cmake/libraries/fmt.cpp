// The compiled part of {fmt}, made of its headers: Debian has it as a shared library only.
#include <fmt/format-inl.h>

namespace fmt::detail {

template char decimal_point_impl(locale_ref);
template thousands_sep_result<char> thousands_sep_impl(locale_ref);
template dragonbox::decimal_fp<float> dragonbox::to_decimal(float) noexcept;
template dragonbox::decimal_fp<double> dragonbox::to_decimal(double) noexcept;

}  // namespace fmt::detail
