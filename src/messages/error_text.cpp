#include "messages/error_text.h"

#include <cstring>

#include "messages/gbk.h"
#include "platform/language.h"
#include "vexo/error.h"

namespace vexo {
namespace {

// The texts are UTF-8 in this file and are converted to GBK (gbk.h) for hosts.
//
// Compatibility: the wording stays as it is, mistakes included: hosts display these texts and search for them.
struct ErrorText {
  int32_t code;
  const char* english;
  const char* chinese;
};

static_assert(sizeof("未") == 4, "the compiler must take and keep the texts of this file as UTF-8");

// clang-format off
constexpr ErrorText kErrorTexts[] = {
    {VEXO_OK, "The operation completed successfully.",
     "操作成功完成。"},
    {VEXO_ERROR_PARAMETER, "Parameter is error. Please check the parameter is corrected.",
     "参数错误。请检查参数是否正确！"},
    {VEXO_ERROR_BUFFER_TOO_SMALL, "There is not enough buffer. Please enlarge the buffer size.",
     "缓存不足。请增加缓存大小！"},
    {VEXO_ERROR_PRINTER_TYPE, "Printer model type is error. Please use the printer with expected type.",
     "打印机类型错误。请选择正确的打印机预设类型！"},
    {VEXO_ERROR_NOT_SUPPORTED_PRINTER, "Does not support this printer. Please use the supported printer.",
     "不支持当前打印机。请使用支持的打印机！"},
    {VEXO_ERROR_HANDLE, "The handle value specified is incorrect. Please confirm the handle value is initialed correctly and not been destroied.",
     "指定句柄发生错误。请确认句柄值是否正确和句柄是否被关闭！"},
    {VEXO_ERROR_NOT_IMPLEMENTED, "Program not implemented. Please confirmed with software supplier.",
     "未实现该功能。请与软件供应商确认是否实现该功能！"},
    {VEXO_ERROR_UNKNOWN_MODEL, "Unable to identify the printer model. Please correct the printer model",
     "无法识别的打印机型号。请使用正确的打印机型号！"},
    {VEXO_ERROR_OUT_OF_MEMORY, "There is not enough memory. Please add available memory.",
     "计算机内存不足。请增加可用内存！"},
    {VEXO_ERROR_WRONG_PRINTER, "There is not the target printer. Please replace it with one target printer.",
     "不是指定的打印机。请更换为指定打印机！"},
    {VEXO_ERROR_ENVIRONMENT, "Environment does not configure correct. Please confim the environment is correct.",
     "环境配置错误。请正确配置环境！"},
    {VEXO_ERROR_CONFIG_FILE, "The configuration file format is incorrect or does not exist. Contact the supplier.",
     "配置文件格式有误或不存在，请联系供应商"},
    {VEXO_ERROR_SDK_MISMATCH, "The printer type does not match the SDK. Please contact the vendor.",
     "打印机类型与该SDK不匹配，请联系供应商"},
    {VEXO_ERROR_IMAGE_LOAD, "Loading image error. Please check the image file path or image format.",
     "加载图片失败。请确认图片路径或格式是否正确！"},
    {VEXO_ERROR_IMAGE_SIZE, "Image size out of range. Please check image.",
     "图片大小超出范围。请确认图片的大小是否有效！"},
    {VEXO_ERROR_PRINT, "VEXO print error.",
     "VEXO 打印错误！"},
    {VEXO_ERROR_DRIVER_DATA, "Drive data error. Please reinstall the correct driver.",
     "驱动数据错误。请重新安装正确的驱动程序！"},
    {VEXO_ERROR_DRIVER_STATE, "Drive printer state error.\nPlease check printer state.",
     "驱动打印机状态错误。\n请检查打印机状态！"},
    {VEXO_ERROR_IO, "IO port error.\nPlease confirm the validity of a serial port and configuration.",
     "IO错误。\n请确认IO和IO配置的有效性！"},
    {VEXO_ERROR_IO_SETTING, "IO invalid setting.\nPlease confirm IO port configuration.",
     "IO错误：配置无效。\n请确认端口的配置！"},
    {VEXO_ERROR_IO_NAME_TOO_LONG, "IO name too long.\nPlease reset the port name.",
     "IO错误：端口名过长。\n请重新设置端口名！"},
    {VEXO_ERROR_IO_OS_VERSION, "Operating system version is too low.\nPlease update version.",
     "IO错误：操作系统版本过低。\n请更新版本！"},
    {VEXO_ERROR_IO_HANDLE, "IO invalid handle.",
     "IO错误：无效句柄"},
    {VEXO_ERROR_IO_NOT_OPEN, "IO port not open.\nPlease open the IO port.",
     "IO错误：端口未打开。\n请先打开端口！"},
    {VEXO_ERROR_IO_ALREADY_OPEN, "IO port already open.\nPlease close and try again to open.",
     "IO错误：端口已打开。\n请先关闭再尝试打开！"},
    {VEXO_ERROR_IO_OPEN_FAILED, "IO port open failed.\nPlease confirm the configuration is correct.",
     "IO错误：打开失败。\n请确认配置是否正确！"},
    {VEXO_ERROR_IO_GET_ATTRIBUTES, "Get IO port attributes error.\nPlease get back again.",
     "IO错误：获取属性错误。\n请重新获取！"},
    {VEXO_ERROR_IO_SET_ATTRIBUTES, "Set IO port attributes error.\nPlease reset.",
     "IO错误：设置属性错误。\n请重新设置！"},
    {VEXO_ERROR_IO_WRITE, "IO port write failed.\nPlease confirm IO port is open.",
     "IO错误：写入数据失败。\n请确认端口是否打开！"},
    {VEXO_ERROR_IO_WRITE_TIMEOUT, "IO port write timeout.\nPlease write again.",
     "IO错误：写入数据超时。\n请重新写入数据！"},
    {VEXO_ERROR_IO_READ, "IO port read failed.\nPlease confirm IO port is open.",
     "IO错误：读取失败。\n请确认端口是否打开！"},
    {VEXO_ERROR_IO_READ_TIMEOUT, "IO port read timeout.\nPlease read again.",
     "IO错误：读取数据超时。\n请重新读取！"},
    {VEXO_ERROR_IO_FLUSH, "IO flush failed.",
     "IO错误：刷新缓冲失败。"},
    {VEXO_ERROR_SERIAL_BAUDRATE, "IO serial invalid baudrate.\nPlease reset.",
     "无效串口波特率。\n请重新设置！"},
    {VEXO_ERROR_NETWORK_CONNECT, "Cannot connect the target network printer.\nPlease confirm the network printer is online and in the same network.",
     "网卡连接失败。\n请确认网络打印机处于可连接状态！"},
    {VEXO_ERROR_SERIAL_HANDSHAKE, "IO serial invalid handshake.\nPlease reset.",
     "无效握手协议。\n请重新设置！"},
    {VEXO_ERROR_USB_PATH, "Invalid usb path.\nPlease reset.",
     "无效USB路径。\n请重新设置！"},
    {VEXO_ERROR_USB_NOT_FOUND, "Usb Device not found.\nPlease confirm the target printer is connected and power on.",
     "未找到USB设备。\n请确认已连接指定的USB打印机并打开电源！"},
    {VEXO_ERROR_USB_BUSY, "Usb device busy.\nPlease wait.",
     "USB设备运行中。\n请稍候操作！"},
    {VEXO_ERROR_MSR_NOT_READY, "MSR track not ready.Please first enter into the MSR read mode.",
     "未进入读MSR模式。请先进入MSR读模式！"},
    {VEXO_ERROR_SMART_CARD_NOT_READY, "Smart card not ready. Please first enter into the Smart card read mode.",
     "未进入读SCR模式。请先进入读SCR模式！"},
    {VEXO_ERROR_ENCRYPT_HEAD, "Error set Encrypt head. Please retry.",
     "磁头加密设置错误。请重新设置！"},
    {VEXO_ERROR_DECRYPT_HEAD, "Error decrypt head data. Please retry.",
     "磁头信息解密异常。请重读！"},
    {VEXO_ERROR_USB_LAYER_SUCCESS, "The LIBUSB operation completed successfully.",
     "LIBUSB执行成功。"},
    {VEXO_ERROR_USB_LAYER_IO, "LIBUSB: IO error. Please check IO settings.",
     "LIBUSB：IO 错误。请查看IO设置！"},
    {VEXO_ERROR_USB_LAYER_PARAMETER, "LIBUSB error: Invalid param. Please check the parameters are corrected.",
     "LIBUSB：无效参数。请检查参数是否正确！"},
    {VEXO_ERROR_USB_LAYER_ACCESS, "LIBUSB：IO Access Error. Please confirm have assigned access right.",
     "LIBUSB：IO访问错误。请确认访问权限！"},
    {VEXO_ERROR_USB_LAYER_NO_DEVICE, "LIBUSB：No IO Device. Please confirm the deviced has connected.",
     "LIBUSB：没有IO设备。"},
    {VEXO_ERROR_USB_LAYER_NOT_FOUND, "LIBUSB: No found IO device. Please attach the IO device.",
     "LIBUSB：查找不到IO设备。请确认已连接IO设备！"},
    {VEXO_ERROR_USB_LAYER_BUSY, "LIBUSB: IO busy. Please execute lately.",
     "LIBUSB：IO 忙。请稍后重试！"},
    {VEXO_ERROR_USB_LAYER_TIMEOUT, "LIBUSB: IO Timeout.Please check the device is operating normally and the timeout setting is correct.",
     "LIBUSB：超时错。请查看打印机是否正常以及超时设置是否正确！"},
    {VEXO_ERROR_USB_LAYER_OVERFLOW, "LIBUSB: overflow error.",
     "LIBUSB：溢出错误。"},
    {VEXO_ERROR_USB_LAYER_PIPE, "LIBUSB error: pipe error.",
     "LIBUSB错误：管道异常。"},
    {VEXO_ERROR_USB_LAYER_INTERRUPTED, "LIBUSB error:  Operate interrupted.Please try again.",
     "LIBUSB错误：操作中断。请重新操作！"},
    {VEXO_ERROR_USB_LAYER_NO_MEMORY, "LIBUSB error: No memory.Please check memory state.",
     "LIBUSB错误：内存不足。请检查内存状态！"},
    {VEXO_ERROR_USB_LAYER_NOT_SUPPORTED, "LIBUSB error: Not supported. Please check current operation.",
     "LIBUSB错误：不支持当前操作。请检查当前操作！"},
    {VEXO_ERROR_USB_LAYER_UNKNOWN, "LIBUSB Unknow Error.",
     "LIBUSB未知错误。"},
};
// clang-format on

constexpr ErrorText kUnknownError = {0, "Printer Unknown Error!", "未知错误!"};

// Compatibility: job monitor and download codes (-6000 and below) deliberately have no text of their own; hosts show
// the general one for them.
const ErrorText& FindErrorText(int32_t code) {
  for (const ErrorText& text : kErrorTexts) {
    if (text.code == code) {
      return text;
    }
  }
  return kUnknownError;
}

}  // namespace

// Compatibility: `size` is ignored, and callers pass 0 for it (GetErrorText does); the buffer must hold the longest
// text.
int32_t CopyErrorMessage(int32_t code, char* buffer, uint32_t /*size*/, int32_t primary_language, uint32_t* length) {
  const ErrorText& text = FindErrorText(code);
  const char* const words = primary_language == platform::kLanguageChinese ? text.chinese : text.english;
  *length = CopyUtf8AsGbk(words, buffer);
  return VEXO_OK;
}

std::string GetErrorText(int32_t code) {
  if (code > 0) {
    return std::to_string(code);
  }
  char buffer[kErrorTextBufferSize] = {};
  uint32_t length = 0;
  CopyErrorMessage(code, buffer, 0, platform::UserPrimaryLanguage(), &length);
  return buffer;
}

}  // namespace vexo
