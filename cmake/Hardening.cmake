# What makes a fault that is still there harder to use: every target that links trn_options has it.

if(TRN_SANITIZE)
    target_compile_definitions(trn_options INTERFACE _GLIBCXX_ASSERTIONS)
else()
    target_compile_definitions(trn_options INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
endif()

if(TRN_HARDEN AND NOT MSVC)
    target_compile_options(trn_options INTERFACE -fstack-protector-strong)
    if(NOT TRN_SANITIZE)
        # Some compilers come with a value of their own. Without optimisation it does nothing.
        target_compile_options(trn_options INTERFACE
            $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    endif()
    if(WIN32)
        # The first brings the library behind the checks.
        target_link_options(trn_options INTERFACE -fstack-protector-strong -Wl,--dynamicbase,--nxcompat,--high-entropy-va)
    elseif(NOT APPLE)
        target_link_options(trn_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
    endif()
endif()

# Programs at any address; libraries are so already.
if(NOT WIN32)
    include(CheckPIESupported)
    check_pie_supported()
endif()
