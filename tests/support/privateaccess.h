#pragma once

#include <functional>
#include <type_traits>
#include <utility>

/// @file
/// Lets a test reach a private member without a word about tests in the class itself: access is not
/// checked for the names in an explicit template instantiation, which hands the pointer out.
///
/// At namespace scope of the test:
///     ZAN_EXPOSE(readFileInfo, &ZanData::readFileInfo);
///     ZAN_EXPOSE(newVer, &CamUpdateData::newVer);
///     ZAN_EXPOSE(textOf, static_cast<QString (*)(int, int)>(&ZanData::getPreReleaseAppendix));
/// Then, for an operation, a data member (by reference), a static operation and a static data
/// member (by reference):
///     QCOMPARE(readFileInfo(image), -3);
///     newVer(file) = VersionInfo(1, 2, 3);
///     QCOMPARE(textOf(10, 3), QStringLiteral("-alpha.3"));
///     QCOMPARE(exemplar(), nullptr);

template <typename Tag, auto Member>
struct ExposedMember
{
    friend auto exposedMember(Tag /*tag*/) { return Member; }
};

template <typename Member, typename... Arguments>
decltype(auto) accessExposed(Member member, Arguments&&... arguments)
{
    if constexpr (std::is_invocable_v<Member, Arguments...>)
        return std::invoke(member, std::forward<Arguments>(arguments)...);
    else
        return (*member);
}

/// @param name what the member is called in the test. @param ... pointer to the member
#define ZAN_EXPOSE(name, ...)                                                                      \
    struct name##Exposed                                                                           \
    {                                                                                              \
        friend auto exposedMember(name##Exposed);                                                  \
    };                                                                                             \
    template struct ExposedMember<name##Exposed, __VA_ARGS__>;                                     \
    template <typename... Arguments>                                                               \
    static decltype(auto) name(Arguments&&... arguments)                                           \
    {                                                                                              \
        return accessExposed(exposedMember(name##Exposed()),                                       \
                             std::forward<Arguments>(arguments)...);                               \
    }                                                                                              \
    static_assert(true, "takes the semicolon")
