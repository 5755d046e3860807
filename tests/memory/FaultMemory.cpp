#include "memory/FaultMemory.h"

#include <cstdlib>
#include <new>
#include <stdexcept>

namespace cqsurvey {

namespace {

struct Accident {
    std::int64_t left = 0;  ///< 0 while none is waiting
    bool stays = false;
    bool struck = false;
};

thread_local constinit Accident t_accident;
sqlite3_mem_methods g_system{};

bool Strikes() noexcept {
    Accident& accident = t_accident;
    if (accident.left == 0) {
        return false;
    }
    if (accident.left > 1) {
        --accident.left;
        return false;
    }
    accident.struck = true;
    if (!accident.stays) {
        accident.left = 0;
    }
    return true;
}

void* Take(int size) {
    return Strikes() ? nullptr : g_system.xMalloc(size);
}

void* TakeAgain(void* memory, int size) {
    return Strikes() ? nullptr : g_system.xRealloc(memory, size);
}

void Use(const sqlite3_mem_methods& methods) {
    if (sqlite3_shutdown() != SQLITE_OK ||
        sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) != SQLITE_OK ||
        sqlite3_initialize() != SQLITE_OK) {
        throw std::runtime_error("the allocator of SQLite cannot be exchanged");
    }
}

}  // namespace

FaultMemory::FaultMemory() {
    if (sqlite3_shutdown() != SQLITE_OK ||
        sqlite3_config(SQLITE_CONFIG_GETMALLOC, &m_system) != SQLITE_OK) {
        throw std::runtime_error("the allocator of SQLite cannot be had");
    }
    g_system = m_system;
    sqlite3_mem_methods faulty = m_system;
    faulty.xMalloc = Take;
    faulty.xRealloc = TakeAgain;
    Use(faulty);
}

FaultMemory::~FaultMemory() {
    Heal();
    Use(m_system);
}

void FaultMemory::FailAt(std::int64_t at, bool stays) {
    t_accident = {at, stays, false};
}

void FaultMemory::Heal() {
    t_accident.left = 0;
}

bool FaultMemory::Struck() const {
    return t_accident.struck;
}

namespace {

void* TakeByNew(std::size_t size) {
    void* memory = Strikes() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace
}  // namespace cqsurvey

// All of them, so that what one of them gives is never given back to another allocator's.
void* operator new(std::size_t size) {
    return cqsurvey::TakeByNew(size);
}
void* operator new[](std::size_t size) {
    return cqsurvey::TakeByNew(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return cqsurvey::Strikes() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return cqsurvey::Strikes() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}
