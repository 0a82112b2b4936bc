// The whole library. Every public header is listed here, folder by folder, and a test of the house
// fails when one of a morvantis_headers() is missing.
#pragma once

#include <morvantis/core/xylbase_timer.h>
#include <morvantis/core/xylexport.h>
#include <morvantis/core/xylguid.h>
#include <morvantis/core/xylguid_generator.h>
#include <morvantis/core/xylmutex.h>
#include <morvantis/core/xylrandom.h>
#include <morvantis/core/xylrandom_generator.h>
#include <morvantis/core/xylreference_counted_object.h>
#include <morvantis/core/xylreport.h>
#include <morvantis/core/xylsimple_game_object.h>
#include <morvantis/core/xyltimer.h>
#include <morvantis/core/xyltypes.h>
#include <morvantis/core/zublibrary.h>
#include <morvantis/core/zublibrary_interface.h>
#include <morvantis/core/zubmessage_interface.h>
#include <morvantis/core/zubobject.h>

#include <morvantis/memory/eastl_config.h>
#include <morvantis/memory/xylarray.h>
#include <morvantis/memory/xylcritical_section.h>
#include <morvantis/memory/xylheap.h>
#include <morvantis/memory/xylheap_allocator.h>
#include <morvantis/memory/xylheap_allocator_link_list.h>
#include <morvantis/memory/xylmap.h>
#include <morvantis/memory/xylmemory_allocation_critical_section_holder.h>
#include <morvantis/memory/xylmemory_allocator_base.h>
#include <morvantis/memory/xylmemory_allocator_globals.h>
#include <morvantis/memory/xylpage_allocator.h>
#include <morvantis/memory/xylstatic_hashtable.h>

#include <morvantis/strings/xylconststring.h>
#include <morvantis/strings/xylstring_base.h>
#include <morvantis/strings/xylvarstring.h>

#include <morvantis/platform/zubplatform.h>

#include <morvantis/io/xylbuffer.h>
#include <morvantis/io/xylfile.h>
#include <morvantis/io/xylinput_binary_file_stream.h>
#include <morvantis/io/xylinput_text_file_stream.h>
#include <morvantis/io/xylio_binary_stream.h>
#include <morvantis/io/xylio_input_binary_file_stream.h>
#include <morvantis/io/xylio_input_text_file_stream.h>
#include <morvantis/io/xylio_output_binary_file_stream.h>
#include <morvantis/io/xylio_output_text_file_stream.h>
#include <morvantis/io/xylio_stream.h>
#include <morvantis/io/xylio_text_stream.h>
#include <morvantis/io/xylnative_file.h>
#include <morvantis/io/xylnative_file_async.h>
#include <morvantis/io/xyloutput_binary_file_stream.h>
#include <morvantis/io/xyloutput_binary_file_stream_auto_flush.h>
#include <morvantis/io/xyloutput_text_file_stream.h>
#include <morvantis/io/zubdeserializable_interface.h>
#include <morvantis/io/zubreader_interface.h>
#include <morvantis/io/zubserializable_interface.h>
#include <morvantis/io/zubstring_reader.h>
#include <morvantis/io/zubstring_writer.h>
#include <morvantis/io/zubunsanitizedstring_reader.h>
#include <morvantis/io/zubwriter_interface.h>

#include <morvantis/net/bit_buffer_manager.h>
#include <morvantis/net/dynamic_bit_buffer.h>
#include <morvantis/net/qonet.h>
#include <morvantis/net/qonet_udp_socket.h>
#include <morvantis/net/qonetaddress.h>
#include <morvantis/net/qonetrawbuffer.h>
#include <morvantis/net/qonetsocketoption.h>
#include <morvantis/net/read_bit_buffer.h>
#include <morvantis/net/udp_packet_id.h>
#include <morvantis/net/udp_socket.h>
#include <morvantis/net/write_bit_buffer.h>

#include <morvantis/math/lanes.h>
#include <morvantis/math/wrapping.h>
#include <morvantis/math/xylbounding_box.h>
#include <morvantis/math/xylconvex_polygon.h>
#include <morvantis/math/xylfrustum.h>
#include <morvantis/math/xylint_vec2.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/math/xylmat3.h>
#include <morvantis/math/xylmath.h>
#include <morvantis/math/xylmatrix_frame.h>
#include <morvantis/math/xylmatrix_frame_d.h>
#include <morvantis/math/xylobject_bounds_cache.h>
#include <morvantis/math/xylpackage_serializer.h>
#include <morvantis/math/xylplane.h>
#include <morvantis/math/xylquaternion.h>
#include <morvantis/math/xylray.h>
#include <morvantis/math/xyltransform.h>
#include <morvantis/math/xyludim.h>
#include <morvantis/math/xyluvec2.h>
#include <morvantis/math/xylvec2.h>
#include <morvantis/math/xylvec3.h>
#include <morvantis/math/xylvec3d.h>

#include <morvantis/diagnostics/xylcolor.h>
#include <morvantis/diagnostics/xyldebug_render_records.h>
#include <morvantis/diagnostics/zubcallstack.h>
#include <morvantis/diagnostics/zubcallstack_frame.h>
#include <morvantis/diagnostics/zubcallstack_helpers.h>
#include <morvantis/diagnostics/zubcallstack_module.h>
#include <morvantis/diagnostics/zubdebughelp_interface.h>
#include <morvantis/diagnostics/zubraw_callstack.h>
