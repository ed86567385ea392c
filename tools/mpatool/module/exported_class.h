/// Members of the classes that a module exports, called by name.
///
/// The tool loads its module at run time, wherever --module says, so it cannot be linked against the module's
/// classes. Their headers stand all the same: they give the types of the members and the size of the objects,
/// the loaded module gives the code. Names are those of the compiler, as in the module's list of exports.
#pragma once

#include "mpatool/module/module_host.h"

#include <cstddef>
#include <utility>

namespace mpatool {

/// The member function type as a plain function, the object first: how x86-64 compilers call both alike.
template <typename Member>
struct PlainFunction;
template <typename Class, typename Result, typename... Arguments>
struct PlainFunction<Result (Class::*)(Arguments...)> {
    using Type = Result (*)(void*, Arguments...);
};

/// One member function of a loaded module. `Member` is the type of a pointer to it.
template <typename Member>
class ExportedFunction {
public:
    /// Throws ToolError when the module does not export it.
    ExportedFunction(ModuleHost& host, const char* name)
        : function_(reinterpret_cast<Function>(host.RequireExport(name))) {}

    template <typename... Arguments>
    auto operator()(void* object, Arguments&&... arguments) const {
        return function_(object, std::forward<Arguments>(arguments)...);
    }

private:
    using Function = typename PlainFunction<Member>::Type;
    Function function_;
};

/// An object of an exported class, made by the loaded module and ended by it; the module must outlive it.
template <typename Class>
class ExportedObject {
public:
    /// The names are those of the constructor without arguments and of the destructor. Throws ToolError when
    /// the module does not export them.
    ExportedObject(ModuleHost& host, const char* constructor, const char* destructor)
        : destroy_(reinterpret_cast<Lifetime>(host.RequireExport(destructor))) {
        reinterpret_cast<Lifetime>(host.RequireExport(constructor))(storage_);
    }
    ExportedObject(const ExportedObject&) = delete;
    ExportedObject& operator=(const ExportedObject&) = delete;
    ~ExportedObject() { destroy_(storage_); }

    void* Get() { return storage_; }

private:
    using Lifetime = void (*)(void*);

    Lifetime destroy_;
    alignas(Class) std::byte storage_[sizeof(Class)] = {};
};

} // namespace mpatool
