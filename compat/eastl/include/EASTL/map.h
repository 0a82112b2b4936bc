// An ordered map.
#pragma once

#include <EASTL/allocator.h>
#include <EASTL/functional.h> // less
#include <EASTL/utility.h>

#include <initializer_list>
#include <map>

namespace eastl {

namespace internal {

// An allocator as the standard library's containers ask for it, over one of EASTL's shape.
template <typename T, typename Allocator> class standard_allocator : private Allocator {
public:
	using value_type = T;

	standard_allocator() = default;
	standard_allocator(const Allocator& other) : Allocator(other) {}
	template <typename U>
	standard_allocator(const standard_allocator<U, Allocator>& other) : Allocator(other.inner()) {}

	T* allocate(size_t n) {
		Allocator& a = *this;
		return static_cast<T*>(allocate_memory(a, n * sizeof(T), alignof(T), 0));
	}
	void deallocate(T* p, size_t n) { Allocator::deallocate(p, n * sizeof(T)); }
	const Allocator& inner() const { return *this; }

	bool operator==(const standard_allocator& other) const { return inner() == other.inner(); }
};

} // namespace internal

// Keys in the order of `Compare`, each once. Iterators and references stay valid until their own
// element goes. One allocation for each element.
template <typename Key, typename T, typename Compare = eastl::less<Key>,
          typename Allocator = eastl::allocator>
class map : private std::map<Key, T, Compare,
                             internal::standard_allocator<std::pair<const Key, T>, Allocator>> {
	using inner =
		std::map<Key, T, Compare, internal::standard_allocator<std::pair<const Key, T>, Allocator>>;

public:
	using allocator_type = Allocator;
	using typename inner::const_iterator;
	using typename inner::const_reverse_iterator;
	using typename inner::difference_type;
	using typename inner::iterator;
	using typename inner::key_compare;
	using typename inner::key_type;
	using typename inner::mapped_type;
	using typename inner::reverse_iterator;
	using typename inner::size_type;
	using typename inner::value_compare;
	using typename inner::value_type;

	map() = default;
	explicit map(const allocator_type& a) : inner(typename inner::allocator_type(a)) {}
	explicit map(const Compare& compare, const allocator_type& a = allocator_type())
		: inner(compare, typename inner::allocator_type(a)) {}
	map(std::initializer_list<value_type> values, const Compare& compare = Compare(),
	    const allocator_type& a = allocator_type())
		: inner(values, compare, typename inner::allocator_type(a)) {}
	template <typename Iterator> map(Iterator first, Iterator last) : inner(first, last) {}

	map& operator=(std::initializer_list<value_type> values) {
		inner::operator=(values);
		return *this;
	}
	void swap(map& other) { inner::swap(other); }

	using inner::begin;
	using inner::cbegin;
	using inner::cend;
	using inner::crbegin;
	using inner::crend;
	using inner::end;
	using inner::rbegin;
	using inner::rend;

	using inner::empty;
	using inner::size;

	using inner::at;
	using inner::operator[];

	using inner::count;
	using inner::equal_range;
	using inner::find;
	using inner::key_comp;
	using inner::lower_bound;
	using inner::upper_bound;
	using inner::value_comp;

	using inner::clear;
	using inner::emplace;
	using inner::emplace_hint;
	using inner::erase;
	using inner::insert;
	using inner::insert_or_assign;
	using inner::try_emplace;

	friend bool operator==(const map& a, const map& b) {
		return static_cast<const inner&>(a) == static_cast<const inner&>(b);
	}
	friend void swap(map& a, map& b) { a.swap(b); }
};

} // namespace eastl
