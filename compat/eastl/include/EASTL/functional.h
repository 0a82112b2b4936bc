// Orderings, and a callable held by value.
#pragma once

#include <EASTL/allocator.h>
#include <EASTL/utility.h>

#include <exception>
#include <functional>
#include <new>
#include <type_traits>

namespace eastl {

// Compares by less-than; less<> takes any two types.
template <typename T = void> struct less : std::less<T> {};

// Thrown by a call of an empty function<>.
class bad_function_call : public std::exception {
public:
	const char* what() const noexcept override { return "bad function_call"; }
};

template <typename Signature> class function;

// A callable of any type with the given signature, or none. A callable of at most two pointers
// that moves without throwing stands inside the object; a larger one stands in a block of the
// default allocator. Moving from a function leaves it empty; calling an empty one throws
// bad_function_call.
//
// Threads: as for any value; calls at the same time are as safe as those of the callable.
template <typename R, typename... Args> class function<R(Args...)> {
public:
	using result_type = R;

	function() noexcept = default;
	function(std::nullptr_t) noexcept {}
	function(const function& other) { copy_from(other); }
	function(function&& other) noexcept { take_from(other); }
	// A null pointer to a function makes an empty one.
	template <typename Functor, typename = std::enable_if_t<
									!std::is_same_v<std::decay_t<Functor>, function> &&
									std::is_invocable_r_v<R, std::decay_t<Functor>&, Args...>>>
	function(Functor functor) {
		if constexpr (std::is_pointer_v<Functor> || std::is_member_pointer_v<Functor>) {
			if (functor == nullptr) return;
		}
		::new (Holder<Functor>::make_room(storage_)) Functor(std::move(functor));
		invoke_ = &Holder<Functor>::invoke;
		manage_ = &Holder<Functor>::manage;
	}
	~function() { destroy(); }

	// Assignment destroys the callable that was held before; assigned to itself, nothing happens.
	function& operator=(const function& other) {
		if (this != &other) {
			destroy();
			copy_from(other);
		}
		return *this;
	}
	function& operator=(function&& other) noexcept {
		if (this != &other) {
			destroy();
			take_from(other);
		}
		return *this;
	}
	function& operator=(std::nullptr_t) noexcept {
		destroy();
		return *this;
	}
	template <typename Functor,
	          typename = std::enable_if_t<!std::is_same_v<std::decay_t<Functor>, function>>>
	function& operator=(Functor&& functor) {
		function(std::forward<Functor>(functor)).swap(*this);
		return *this;
	}

	void swap(function& other) noexcept {
		function held(std::move(other));
		other = std::move(*this);
		*this = std::move(held);
	}

	explicit operator bool() const noexcept { return invoke_ != nullptr; }

	R operator()(Args... args) const {
		if (invoke_ == nullptr) throw bad_function_call();
		return invoke_(storage_, std::forward<Args>(args)...);
	}

private:
	union Storage {
		void* block; // where the callable stands if it is too large for here
		alignas(void*) unsigned char bytes[2 * sizeof(void*)];
	};
	enum Task { task_copy, task_move, task_destroy };

	// What is done with a callable of one type.
	template <typename Functor> struct Holder {
		static constexpr bool is_inside = sizeof(Functor) <= sizeof(Storage) &&
		                                  alignof(Functor) <= alignof(Storage) &&
		                                  std::is_nothrow_move_constructible_v<Functor>;

		static void* make_room(Storage& storage) {
			if constexpr (is_inside) {
				return storage.bytes;
			} else {
				storage.block =
					allocate_memory(*GetDefaultAllocator(), sizeof(Functor), alignof(Functor), 0);
				return storage.block;
			}
		}
		static Functor& held(const Storage& storage) {
			const void* place = is_inside ? static_cast<const void*>(storage.bytes) : storage.block;
			return *std::launder(static_cast<Functor*>(const_cast<void*>(place)));
		}
		static R invoke(const Storage& storage, Args... args) {
			if constexpr (std::is_void_v<R>) {
				std::invoke(held(storage), std::forward<Args>(args)...);
			} else {
				return std::invoke(held(storage), std::forward<Args>(args)...);
			}
		}
		static void manage(Task task, Storage& target, Storage* source) {
			switch (task) {
			case task_copy:
				::new (make_room(target)) Functor(held(*source));
				break;
			case task_move:
				if constexpr (is_inside) {
					::new (make_room(target)) Functor(std::move(held(*source)));
					held(*source).~Functor();
				} else {
					target.block = source->block;
				}
				break;
			case task_destroy:
				held(target).~Functor();
				if constexpr (!is_inside) {
					GetDefaultAllocator()->deallocate(target.block, sizeof(Functor));
				}
				break;
			}
		}
	};

	// The next three expect or leave an empty object.
	void copy_from(const function& other) {
		if (other.invoke_ == nullptr) return;
		other.manage_(task_copy, storage_, const_cast<Storage*>(&other.storage_));
		invoke_ = other.invoke_;
		manage_ = other.manage_;
	}
	void take_from(function& other) noexcept {
		if (other.invoke_ == nullptr) return;
		other.manage_(task_move, storage_, &other.storage_);
		invoke_ = std::exchange(other.invoke_, nullptr);
		manage_ = std::exchange(other.manage_, nullptr);
	}
	void destroy() noexcept {
		if (invoke_ == nullptr) return;
		manage_(task_destroy, storage_, nullptr);
		invoke_ = nullptr;
		manage_ = nullptr;
	}

	Storage storage_{};
	R (*invoke_)(const Storage&, Args...) = nullptr; // null: empty
	void (*manage_)(Task, Storage&, Storage*) = nullptr;
};

template <typename R, typename... Args>
bool operator==(const function<R(Args...)>& f, std::nullptr_t) noexcept {
	return !f;
}
template <typename R, typename... Args>
void swap(function<R(Args...)>& a, function<R(Args...)>& b) noexcept {
	a.swap(b);
}

} // namespace eastl
