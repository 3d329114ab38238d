// For test programs that run out of memory on purpose: with a sanitizer that is then an answer, too, and not
// the end of the program. Listed among the program's sources.

extern "C" __attribute__((visibility("default"))) char const *__asan_default_options();
extern "C" __attribute__((visibility("default"))) char const *__tsan_default_options();

extern "C" char const *__asan_default_options()
{
    return "allocator_may_return_null=1";
}

extern "C" char const *__tsan_default_options()
{
    return "allocator_may_return_null=1";
}
