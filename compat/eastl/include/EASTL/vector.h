// A growing array.
#pragma once

#include <EASTL/allocator.h>
#include <EASTL/utility.h>

#include <algorithm>
#include <compare>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

namespace eastl {

// Elements one behind the other in one block of the allocator's. An append to a full block moves
// to twice its size, from 1 element up, or to just enough for a longer addition; everything else
// that needs a block (constructors, assignment, reserve) takes one of exactly its size. A move
// empties its source.
//
// Iterators are pointers; a change of the block makes them invalid. Elements must move without
// throwing. Running out of memory isn't tested.
template <typename T, typename Allocator = eastl::allocator> class vector : private Allocator {
public:
	using value_type = T;
	using pointer = T*;
	using const_pointer = const T*;
	using reference = T&;
	using const_reference = const T&;
	using iterator = T*;
	using const_iterator = const T*;
	using reverse_iterator = std::reverse_iterator<iterator>;
	using const_reverse_iterator = std::reverse_iterator<const_iterator>;
	using size_type = eastl_size_t;
	using difference_type = ptrdiff_t;
	using allocator_type = Allocator;

	static constexpr size_type npos = static_cast<size_type>(-1);

	vector() = default;
	explicit vector(const allocator_type& a) noexcept : Allocator(a) {}
	explicit vector(size_type n, const allocator_type& a = allocator_type()) : vector(a) {
		take_block(n);
		fill_end(n);
	}
	vector(size_type n, const value_type& value, const allocator_type& a = allocator_type())
		: vector(a) {
		take_block(n);
		fill_end(n, value);
	}
	vector(const vector& other) : vector(other, other.get_allocator()) {}
	vector(const vector& other, const allocator_type& a) : vector(other.mpBegin, other.mpEnd, a) {}
	vector(vector&& other) noexcept : Allocator(other.get_allocator()) { swap_blocks(other); }
	vector(std::initializer_list<value_type> values, const allocator_type& a = allocator_type())
		: vector(values.begin(), values.end(), a) {}
	template <std::input_iterator Iterator>
	vector(Iterator first, Iterator last, const allocator_type& a = allocator_type()) : vector(a) {
		append(first, last);
	}
	~vector() { release(); }

	vector& operator=(const vector& other) {
		if (this != &other) assign(other.mpBegin, other.mpEnd);
		return *this;
	}
	vector& operator=(vector&& other) noexcept {
		if (this != &other) {
			release();
			swap(other);
		}
		return *this;
	}
	vector& operator=(std::initializer_list<value_type> values) {
		assign(values.begin(), values.end());
		return *this;
	}

	void assign(size_type n, const value_type& value) {
		if (n > capacity()) {
			vector(n, value, get_allocator()).swap(*this);
		} else {
			const value_type kept(value); // which may be one of the elements
			clear();
			fill_end(n, kept);
		}
	}
	// The range must not be part of this vector.
	template <std::input_iterator Iterator> void assign(Iterator first, Iterator last) {
		if constexpr (std::forward_iterator<Iterator>) {
			if (static_cast<size_type>(std::distance(first, last)) > capacity()) {
				vector(first, last, get_allocator()).swap(*this);
				return;
			}
		}
		clear();
		append(first, last);
	}
	void assign(std::initializer_list<value_type> values) { assign(values.begin(), values.end()); }
	void swap(vector& other) noexcept {
		swap_blocks(other);
		std::swap(static_cast<Allocator&>(*this), static_cast<Allocator&>(other));
	}

	iterator begin() noexcept { return mpBegin; }
	const_iterator begin() const noexcept { return mpBegin; }
	const_iterator cbegin() const noexcept { return mpBegin; }
	iterator end() noexcept { return mpEnd; }
	const_iterator end() const noexcept { return mpEnd; }
	const_iterator cend() const noexcept { return mpEnd; }
	reverse_iterator rbegin() noexcept { return reverse_iterator(mpEnd); }
	const_reverse_iterator rbegin() const noexcept { return const_reverse_iterator(mpEnd); }
	const_reverse_iterator crbegin() const noexcept { return const_reverse_iterator(mpEnd); }
	reverse_iterator rend() noexcept { return reverse_iterator(mpBegin); }
	const_reverse_iterator rend() const noexcept { return const_reverse_iterator(mpBegin); }
	const_reverse_iterator crend() const noexcept { return const_reverse_iterator(mpBegin); }

	bool empty() const noexcept { return mpBegin == mpEnd; }
	size_type size() const noexcept { return static_cast<size_type>(mpEnd - mpBegin); }
	size_type capacity() const noexcept { return static_cast<size_type>(mpCapacity - mpBegin); }

	// New elements are value-initialised. Growing past the capacity follows the rule of an append.
	void resize(size_type n) {
		if (n <= size()) return erase_end(n);
		make_room(n - size());
		fill_end(n - size());
	}
	void resize(size_type n, const value_type& value) {
		if (n <= size()) return erase_end(n);
		const value_type kept(value); // which may be one of the elements
		make_room(n - size());
		fill_end(n - size(), kept);
	}
	// Never makes the block smaller.
	void reserve(size_type n) {
		if (n > capacity()) move_to_block(n);
	}
	// Makes the block exactly `n` elements large, cutting elements off if there are more; npos
	// stands for the present size.
	void set_capacity(size_type n = npos) {
		if (n < size()) erase_end(n);
		const size_type target = n == npos ? size() : n;
		if (target != capacity()) move_to_block(target);
	}
	void shrink_to_fit() { set_capacity(); }

	pointer data() noexcept { return mpBegin; }
	const_pointer data() const noexcept { return mpBegin; }
	reference operator[](size_type i) { return mpBegin[i]; }
	const_reference operator[](size_type i) const { return mpBegin[i]; }
	// Throws std::out_of_range.
	reference at(size_type i) { return mpBegin[checked(i)]; }
	const_reference at(size_type i) const { return mpBegin[checked(i)]; }
	reference front() { return *mpBegin; }
	const_reference front() const { return *mpBegin; }
	reference back() { return mpEnd[-1]; }
	const_reference back() const { return mpEnd[-1]; }

	void push_back(const value_type& value) { emplace_back(value); }
	void push_back(value_type&& value) { emplace_back(std::move(value)); }
	// Appends a value-initialised element.
	reference push_back() { return emplace_back(); }
	template <typename... Args> reference emplace_back(Args&&... args) {
		if (mpEnd != mpCapacity) {
			::new (static_cast<void*>(mpEnd)) value_type(std::forward<Args>(args)...);
			return *mpEnd++;
		}
		return emplace_back_into_new_block(std::forward<Args>(args)...);
	}
	void pop_back() { std::destroy_at(--mpEnd); }

	template <typename... Args> iterator emplace(const_iterator position, Args&&... args) {
		const difference_type index = position - mpBegin;
		emplace_back(std::forward<Args>(args)...);
		return rotate_in(index, 1);
	}
	iterator insert(const_iterator position, const value_type& value) {
		return emplace(position, value);
	}
	iterator insert(const_iterator position, value_type&& value) {
		return emplace(position, std::move(value));
	}
	iterator insert(const_iterator position, size_type n, const value_type& value) {
		const difference_type index = position - mpBegin;
		resize(size() + n, value);
		return rotate_in(index, static_cast<difference_type>(n));
	}
	// The range must not be part of this vector.
	template <std::input_iterator Iterator>
	iterator insert(const_iterator position, Iterator first, Iterator last) {
		const difference_type index = position - mpBegin;
		const size_type old_size = size();
		append(first, last);
		return rotate_in(index, static_cast<difference_type>(size() - old_size));
	}
	iterator insert(const_iterator position, std::initializer_list<value_type> values) {
		return insert(position, values.begin(), values.end());
	}

	iterator erase(const_iterator position) { return erase(position, position + 1); }
	iterator erase(const_iterator first, const_iterator last) {
		iterator target = const_cast<iterator>(first);
		if (first != last) {
			const iterator new_end = std::move(const_cast<iterator>(last), mpEnd, target);
			std::destroy(new_end, mpEnd);
			mpEnd = new_end;
		}
		return target;
	}
	// Puts the last element in the place of the erased one instead of closing the gap.
	iterator erase_unsorted(const_iterator position) {
		const iterator target = const_cast<iterator>(position);
		if (target != mpEnd - 1) *target = std::move(back());
		pop_back();
		return target;
	}
	// Ends the elements and keeps the block.
	void clear() noexcept { erase_end(0); }
	// Forgets the block without ending or freeing anything.
	void reset_lose_memory() noexcept { mpBegin = mpEnd = mpCapacity = nullptr; }

	allocator_type& get_allocator() noexcept { return *this; }
	const allocator_type& get_allocator() const noexcept { return *this; }

	// Whether the three pointers make sense.
	bool validate() const noexcept { return mpBegin <= mpEnd && mpEnd <= mpCapacity; }

private:
	// Takes the first block, of `n` elements; none for 0.
	void take_block(size_type n) {
		if (n == 0) return;
		mpBegin = mpEnd = static_cast<pointer>(
			allocate_memory(get_allocator(), n * sizeof(value_type), alignof(value_type), 0));
		mpCapacity = mpBegin + n;
	}
	void release() noexcept {
		std::destroy(mpBegin, mpEnd);
		if (mpBegin) Allocator::deallocate(mpBegin, capacity() * sizeof(value_type));
		reset_lose_memory();
	}
	void swap_blocks(vector& other) noexcept {
		std::swap(mpBegin, other.mpBegin);
		std::swap(mpEnd, other.mpEnd);
		std::swap(mpCapacity, other.mpCapacity);
	}
	void move_to_block(size_type n) {
		vector fresh(get_allocator());
		fresh.take_block(n);
		fresh.mpEnd = std::uninitialized_move(mpBegin, mpEnd, fresh.mpBegin);
		swap_blocks(fresh);
	}
	size_type capacity_for(size_type addition) const noexcept {
		return std::max(empty() ? 1 : 2 * size(), size() + addition);
	}
	void make_room(size_type addition) {
		if (addition > static_cast<size_type>(mpCapacity - mpEnd)) {
			move_to_block(capacity_for(addition));
		}
	}
	// The new element comes first: its arguments may be part of the old block.
	template <typename... Args> reference emplace_back_into_new_block(Args&&... args) {
		vector fresh(get_allocator());
		fresh.take_block(capacity_for(1));
		::new (static_cast<void*>(fresh.mpBegin + size())) value_type(std::forward<Args>(args)...);
		fresh.mpEnd = std::uninitialized_move(mpBegin, mpEnd, fresh.mpBegin) + 1;
		swap_blocks(fresh);
		return back();
	}

	// The next two need the room.
	void fill_end(size_type n) { mpEnd = std::uninitialized_value_construct_n(mpEnd, n); }
	void fill_end(size_type n, const value_type& value) {
		mpEnd = std::uninitialized_fill_n(mpEnd, n, value);
	}
	template <typename Iterator> void append(Iterator first, Iterator last) {
		if constexpr (std::forward_iterator<Iterator>) {
			make_room(static_cast<size_type>(std::distance(first, last)));
			mpEnd = std::uninitialized_copy(first, last, mpEnd);
		} else {
			for (; first != last; ++first) emplace_back(*first);
		}
	}
	void erase_end(size_type n) noexcept {
		std::destroy(mpBegin + n, mpEnd);
		mpEnd = mpBegin + n;
	}
	// Brings the last `n` elements before the one at `index`.
	iterator rotate_in(difference_type index, difference_type n) {
		std::rotate(mpBegin + index, mpEnd - n, mpEnd);
		return mpBegin + index;
	}
	size_type checked(size_type i) const {
		if (i >= size()) throw std::out_of_range("vector::at -- out of range");
		return i;
	}

	pointer mpBegin = nullptr; // null without a block
	pointer mpEnd = nullptr;
	pointer mpCapacity = nullptr;
};

template <typename T, typename Allocator>
bool operator==(const vector<T, Allocator>& a, const vector<T, Allocator>& b) {
	return std::equal(a.begin(), a.end(), b.begin(), b.end());
}
template <typename T, typename Allocator>
auto operator<=>(const vector<T, Allocator>& a, const vector<T, Allocator>& b) {
	return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end());
}
template <typename T, typename Allocator>
void swap(vector<T, Allocator>& a, vector<T, Allocator>& b) noexcept {
	a.swap(b);
}

} // namespace eastl
