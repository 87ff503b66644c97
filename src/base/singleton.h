#pragma once

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>

namespace panelry
{

/// What becomes of a singleton at the end of the process.
enum class AtExit {
    Destroy,         ///< deleted by the exit function
    LeaveIfRunning,  ///< left alone while the application thread lives: its objects die on that thread or not
                     ///< at all
};

/// True while the application thread lives; a host may leave main() without having called Uninit. Never set in a
/// module, whose copy this isn't: LeaveIfRunning is for the library's own singletons.
inline std::atomic<bool> ApplicationThreadAlive{false};

/// Ends the program with the standard assertion report on "m_pInstance" if it is null, in every build.
void AssertMade(const void* m_pInstance);

/// The singleton pattern of the system: `class Foo : public Singleton<Foo>`.
///
/// Ownership: the static pointer owns; Destroy() deletes and clears it, a process-exit function does the
/// same.
///   After Destroy() the object can be made again.
/// Threading: Instance() from any thread; creation is serialised. Destroy() belongs to the thread on which
/// the
///   object lives. What T's operations allow is T's matter.
/// Failures: no memory for the object ends the program.
/// Each library that compiles a T in has an instance of its own: keep symbols hidden.
template <class T, AtExit end = AtExit::Destroy>
class Singleton
{
public:
    /// The object; made on first use with `create`, null before that without.
    static T* Instance(bool create)
    {
        if (T* made = s_instance.load(std::memory_order_acquire); made || !create) {
            return made;
        }
        const std::lock_guard guard(s_creation);
        if (!s_instance.load(std::memory_order_relaxed)) {
            T* const m_pInstance = new (std::nothrow) T;
            AssertMade(m_pInstance);
            s_instance.store(m_pInstance, std::memory_order_release);
            static const int registered = std::atexit(&Singleton::OnExit);
            static_cast<void>(registered);
        }
        return s_instance.load(std::memory_order_relaxed);
    }

    /// Deletes the object, if there is one. The pointer is cleared only afterwards: what the destructor sets
    /// in motion still finds the object, and does not make another one.
    static void Destroy()
    {
        delete s_instance.load(std::memory_order_acquire);
        s_instance.store(nullptr, std::memory_order_release);
    }

protected:
    Singleton() = default;
    ~Singleton() = default;

public:
    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

private:
    static void OnExit()
    {
        if (end == AtExit::Destroy || !ApplicationThreadAlive.load()) {
            Destroy();
        }
    }

    static inline std::atomic<T*> s_instance{nullptr};
    static inline std::mutex s_creation;
};

}  // namespace panelry
