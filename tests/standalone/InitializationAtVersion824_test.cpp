#include <standalone/Initialization.h>

#include <link.h>

INITIALIZATION_TESTS(InitializationAtVersion824, 824.0, true)

TEST(InitializationAtVersion824, ComesAfterEveryRegistrationTable) {
    void* const library = dlopen(libraryFile().c_str(), RTLD_NOLOAD | RTLD_NOW);
    ASSERT_TRUE(library);
    link_map* map = nullptr;
    ASSERT_EQ(dlinfo(library, RTLD_DI_LINKMAP, &map), 0);
    ElfW(Addr) constructors = 0, size = 0;
    for (const ElfW(Dyn)* entry = map->l_ld; entry->d_tag != DT_NULL; ++entry) {
        if (entry->d_tag == DT_INIT_ARRAY)
            constructors = map->l_addr + entry->d_un.d_ptr;
        if (entry->d_tag == DT_INIT_ARRAYSZ)
            size = entry->d_un.d_val;
    }
    ASSERT_GT(size, sizeof(void*));
    void* const last = reinterpret_cast<void* const*>(constructors + size)[-1];
    EXPECT_EQ(last, dlsym(library, "ToviFoundationKitInitialize"));
    dlclose(library);
}
