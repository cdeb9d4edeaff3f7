#ifndef VIRTUAL_PRINTER_TRANSPORT_BYTE_STREAM_H_
#define VIRTUAL_PRINTER_TRANSPORT_BYTE_STREAM_H_

#include <asio.hpp>
#include <cstddef>
#include <functional>
#include <system_error>
#include <utility>

namespace virtual_printer {

// The connection to one host. One read and one write may be pending at a time. The caller keeps the buffer and the
// stream alive until they complete. Handlers run in the stream's executor, never inside the calls.
class ByteStream {
 public:
  // Errors of a read on a working stream. A host that sends no more may still receive; a host that has gone may not.
  static constexpr asio::error::misc_errors kHostSendsNoMore = asio::error::eof;
  static constexpr asio::error::basic_errors kHostHasGone = asio::error::broken_pipe;

  using ReadHandler = std::function<void(const std::error_code& error, std::size_t size)>;
  using WriteHandler = std::function<void(const std::error_code& error)>;

  virtual ~ByteStream() = default;

  virtual asio::any_io_executor Executor() = 0;

  // Reads what is available, at least one byte.
  virtual void Read(asio::mutable_buffer buffer, ReadHandler on_read) = 0;

  // Writes the whole buffer.
  virtual void Write(asio::const_buffer buffer, WriteHandler on_written) = 0;

  // Pending operations complete with an error.
  virtual void Close() = 0;
};

// A stream on an asio I/O object: a socket, a descriptor or a handle.
template <typename Device>
class DeviceStream : public ByteStream {
 public:
  explicit DeviceStream(Device device) : device_(std::move(device)) {}

  asio::any_io_executor Executor() override { return device_.get_executor(); }

  void Read(asio::mutable_buffer buffer, ReadHandler on_read) override {
    device_.async_read_some(buffer, std::move(on_read));
  }

  void Write(asio::const_buffer buffer, WriteHandler on_written) override {
    asio::async_write(device_, buffer, [on_written = std::move(on_written)](const std::error_code& error, std::size_t) {
      on_written(error);
    });
  }

  void Close() override {
    std::error_code ignored;
    device_.close(ignored);
  }

 protected:
  Device device_;
};

}  // namespace virtual_printer

#endif  // VIRTUAL_PRINTER_TRANSPORT_BYTE_STREAM_H_
