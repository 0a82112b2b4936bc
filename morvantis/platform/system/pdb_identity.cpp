// The container is a file of blocks that holds numbered streams. A header names the blocks that
// hold the list of the blocks that hold the directory, which has each stream's size and blocks.

#include <morvantis/platform/system/pdb_identity.h>

#include <cstring>

namespace {

struct Container_header {
	char magic[32];
	xylUInt32 block_size, free_map, block_count, directory_size, reserved, directory_list_block;
};
static_assert(sizeof(Container_header) == 56);
constexpr char container_magic[] = "Microsoft C/C++ MSF 7.00\r\n\x1A"
								   "DS\0\0";
static_assert(sizeof(container_magic) == 32); // the string's own zero is the third of three

constexpr xylUInt32 information_stream = 1, debug_stream = 3;
constexpr xylUInt32 absent_stream = 0xFFFFFFFF; // as a size

// Heads of the two streams.
struct Information {
	xylUInt32 version, signature, age;
	unsigned char guid[16];
};
static_assert(sizeof(Information) == 28);
struct Debug_information {
	xylUInt32 signature, version, age;
};
constexpr xylUInt32 debug_signature = 0xFFFFFFFF;

class Container {
public:
	explicit Container(const os::Random_access& file) : file_(file) {}

	bool open() {
		if (!read_at(0, &header_, sizeof(header_))) return false;
		if (std::memcmp(header_.magic, container_magic, sizeof(container_magic)) != 0) return false;
		const xylUInt32 size = header_.block_size;
		return size >= 512 && size <= 65536 && (size & (size - 1)) == 0 &&
		       read_directory(0, stream_count_);
	}

	// Reads the head of a stream, which is smaller than any block.
	bool read_head(xylUInt32 stream, void* bytes, xylUInt32 size) {
		if (stream >= stream_count_) return false;
		// Sizes of all streams come first, then the blocks of each.
		xylUInt64 place = 1 + xylUInt64{stream_count_};
		xylUInt32 stream_size;
		for (xylUInt32 no = 0; no < stream; ++no) {
			if (!read_directory(1 + no, stream_size)) return false;
			place += stream_size == absent_stream ? 0 : blocks_of(stream_size);
		}
		xylUInt32 block;
		if (!read_directory(1 + stream, stream_size) || stream_size == absent_stream ||
		    stream_size < size || !read_directory(place, block)) {
			return false;
		}
		return read_at(xylUInt64{block} * header_.block_size, bytes, size);
	}

private:
	bool read_at(xylUInt64 place, void* bytes, size_t size) const {
		return file_.read(file_.source, place, bytes, size);
	}

	xylUInt64 blocks_of(xylUInt32 size) const {
		return (xylUInt64{size} + header_.block_size - 1) / header_.block_size;
	}

	// Number `index` of the directory.
	bool read_directory(xylUInt64 index, xylUInt32& number) const {
		const xylUInt64 place = index * sizeof(number);
		if (place + sizeof(number) > header_.directory_size) return false;
		const xylUInt64 list = xylUInt64{header_.directory_list_block} * header_.block_size;
		xylUInt32 block;
		return read_at(list + place / header_.block_size * sizeof(block), &block, sizeof(block)) &&
		       read_at(xylUInt64{block} * header_.block_size + place % header_.block_size, &number,
		               sizeof(number));
	}

	const os::Random_access& file_;
	Container_header header_;
	xylUInt32 stream_count_;
};

} // namespace

bool os::read_pdb_identity(const Random_access& file, Pdb_identity& identity) {
	Container container(file);
	Information information;
	if (!container.open() ||
	    !container.read_head(information_stream, &information, sizeof(information))) {
		return false;
	}
	std::memcpy(identity.guid, information.guid, sizeof(identity.guid));
	identity.age = identity.build_age = information.age;
	Debug_information debug;
	if (container.read_head(debug_stream, &debug, sizeof(debug)) &&
	    debug.signature == debug_signature) {
		identity.build_age = debug.age;
	}
	return true;
}
