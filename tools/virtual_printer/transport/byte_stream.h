#ifndef VIRTUAL_PRINTER_TRANSPORT_BYTE_STREAM_H_
#define VIRTUAL_PRINTER_TRANSPORT_BYTE_STREAM_H_

#include <asio.hpp>
#include <cstddef>
#include <functional>
#include <system_error>
#include <utility>

namespace virtual_printer {

// What joins the printer to one host. One read and one write may be under way at a time; whoever starts one keeps its
// buffer and the stream alive until it has ended. Handlers run in the stream's executor, never inside the calls.
class ByteStream {
 public:
  // What a read ends with when there is nothing wrong with the stream. A host that sends nothing any more may still
  // take what it is sent; one that has gone takes nothing.
  static constexpr asio::error::misc_errors kHostSendsNoMore = asio::error::eof;
  static constexpr asio::error::basic_errors kHostHasGone = asio::error::broken_pipe;

  using ReadHandler = std::function<void(const std::error_code& error, std::size_t size)>;
  using WriteHandler = std::function<void(const std::error_code& error)>;

  virtual ~ByteStream() = default;

  virtual asio::any_io_executor Executor() = 0;

  // Takes what there is, at least one byte.
  virtual void Read(asio::mutable_buffer buffer, ReadHandler on_read) = 0;

  // Sends everything.
  virtual void Write(asio::const_buffer buffer, WriteHandler on_written) = 0;

  // What is under way ends with an error.
  virtual void Close() = 0;
};

// The stream of one of asio's devices: a socket, a descriptor, a handle.
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
