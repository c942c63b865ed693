// SPDX-License-Identifier: MIT
//
// module.h: what of the module pages may call. The engine looks each up in the library by its name
// when it is called; there is no way to name anything else.
#pragma once

#include "vokcontrol.h"

namespace page::module {

/// @return the library's function of that name; a library without it ends in an exception
[[nodiscard]] void* lookUp(const char* name);

template <class Type> class Function;

template <class Result, class... Parameters> class Function<Result(Parameters...)> {
  public:
    consteval explicit Function(const char* name) : name_(name) {}

    Result operator()(Parameters... parameters) const
    {
        return reinterpret_cast<Result (*)(Parameters...)>(lookUp(name_))(parameters...);
    }

  private:
    const char* name_;
};

// NOLINTBEGIN(readability-identifier-naming): they are called like the functions that they call
inline constexpr Function<decltype(::getDriveInfos)> getDriveInfos("getDriveInfos");
inline constexpr Function<decltype(::getvar)> getvar("getvar");
inline constexpr Function<decltype(::kytegetSysVar)> kytegetSysVar("kytegetSysVar");
inline constexpr Function<decltype(::printNextPage)> printNextPage("printNextPage");
inline constexpr Function<decltype(::printTovHDDs)> printTovHDDs("printTovHDDs");
inline constexpr Function<decltype(::setSysVar)> setSysVar("setSysVar");
inline constexpr Function<decltype(::setvar)> setvar("setvar");
inline constexpr Function<decltype(::tideWaveFunc)> tideWaveFunc("tideWaveFunc");
// NOLINTEND(readability-identifier-naming)

} // namespace page::module
