#include "share/diagnostics/internal/crash_report.h"

#include <fmt/format.h>

#include <chrono>
#include <iterator>

#include "framework/text.h"
#include "platform/time.h"
#include "share/core/document_messages.h"
#include "share/core/version_info.h"
#include "share/diagnostics/internal/crash_names.h"
#include "share/env/product_identity.h"

namespace {

constexpr std::size_t kCodeBytes = 16;
constexpr DWORD kAccessParameters = 2;
constexpr unsigned kWorkstation64 = 9;

DWORD Low(ULONGLONG number) { return DWORD(number); }

// Upward.
int Megabytes(ULONGLONG bytes) { return int((bytes + 0xFFFFF) / 0x100000); }

// "2024/0715" as "15-Jul-2024"; another form stays.
std::string DateText(LPCTSTR code) {
  std::string text = ToUtf8(code);
  int year = 0;
  int day = 0;
  if (text.size() != 9 || text[4] != '/') return text;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i != 4 && (text[i] < '0' || text[i] > '9')) return text;
    if (i != 4) (i < 4 ? year : day) = (i < 4 ? year : day) * 10 + (text[i] - '0');
  }
  return fmt::format("{:02}-{}-{}", day % 100, MonthName(day / 100), year);
}

// ---- times

struct CalendarTime {
  int year, month, day, hour, minute, second;
};

// By an offset, without the system's tables of time zones.
CalendarTime WithOffset(LONGLONG time, LONGLONG offset) {
  using namespace std::chrono;
  const sys_seconds local{seconds(time + offset)};
  const auto days_part = floor<days>(local);
  const year_month_day date(days_part);
  const hh_mm_ss clock(local - days_part);
  return {int(date.year()),           int(unsigned(date.month())),  int(unsigned(date.day())),
          int(clock.hours().count()), int(clock.minutes().count()), int(clock.seconds().count())};
}

CalendarTime LocalTime(LONGLONG time, const CrashRequest& request, bool is_healthy) {
  std::tm fields = {};
  const __time64_t seconds = time;
  if (!is_healthy || _localtime64_s(&fields, &seconds) != 0) return WithOffset(time, request.localOffset);
  return {fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday, fields.tm_hour, fields.tm_min, fields.tm_sec};
}

// ---- the sections

class Report {
 public:
  Report(const CrashRequest& request, const CrashSnapshot& snapshot, const SystemTexts* system,
         std::pmr::memory_resource* arena)
      : request_(request), snapshot_(snapshot), system_(system), text_(arena) {}

  std::pmr::string Text() {
    AddHead();
    text_ += request_.versions;
    if (system_) AddSystem();
    if (system_ && system_->graphics) AddGraphics(*system_->graphics);
    AddRegisters();
    AddCode();
    AddModules();
    if (!system_) text_ += "\r\n---------- [partial: written by the crashed program itself] ------------\r\n";
    Add("\r\n---------- [end of {}] ------------\r\n\r\n", request_.reportName);
    return std::move(text_);
  }

 private:
  template <class... Arguments>
  void Add(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Arguments>(arguments)...);
  }

  // The time has a grid of two seconds.
  void AddTime(LONGLONG time) {
    const CalendarTime local = LocalTime(time, request_, system_ != nullptr);
    Add("{:02}-{}-{} {:02}:{:02}:{:02}", local.day, MonthName(local.month), local.year, local.hour, local.minute,
        local.second / 2 * 2);
  }

  void AddHead() {
    const EXCEPTION_RECORD& record = request_.fault.record;
    const CONTEXT& context = request_.fault.context;
    const std::string_view program = snapshot_.Program();
    Add("Error type          :    {} (0x{:08x})\r\n", ExceptionName(record.ExceptionCode), record.ExceptionCode);
    Add("Error at            :    {:04x}:{:08x} \r\n", context.SegCs, Low(context.Rip));
    Add("Module name         :    {} \r\n", FaultingModule(snapshot_, request_.fault));
    Add("Program name        :    {} \r\n", program.empty() ? "Unknown" : program);
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= kAccessParameters) {
      Add("{} location {:08x} caused an access violation.\r\n",
          record.ExceptionInformation[0] != 0 ? "Write to" : "Read from", Low(record.ExceptionInformation[1]));
    }
    text_ += "\r\n";
  }

  void AddSystem() {
    const CrashFigures figures = snapshot_.Figures();
    text_ += "\r\n===============System information=================== \r\n";
    text_ += "Error occurred at              : ";
    AddTime(std::time(nullptr));
    text_ += ". \r\n";
    Add("User                           : {}. \r\n", system_->user);
    Add("Operating system               : {} ( {} ) \r\n", system_->system, system_->version);
    Add("Operating system Lanugage\t\t: {} \r\n", system_->language);
    text_ += "Visual Studio Build Version   : Unknown Visual Studio Version \r\n";
    Add("Processors and Type            : {} \t {} ( {} ) \r\n", figures.processors, figures.processorType,
        figures.architecture == kWorkstation64 ? "64-Bit" : "32-Bit");
    Add("Memory in use                  : {}% \r\n", figures.memoryInUse);
    Add("MBytes physical memory         : {} \r\n", Megabytes(figures.physical));
    Add("MBytes physical memory free    : {} \r\n", Megabytes(figures.physicalFree));
    Add("MBytes paging file             : {} \r\n", Megabytes(figures.pagingFile));
    Add("MBytes paging file free        : {} \r\n", Megabytes(figures.pagingFileFree));
    Add("MBytes user address space      : {} \r\n", Megabytes(figures.addressSpace));
    Add("MBytes user address space free : {} \r\n", Megabytes(figures.addressSpaceFree));
  }

  void AddGraphics(const GraphicsTexts& graphics) {
    text_ += "\r\n===============Graphics information=================== \r\n";
    Add("Graphics card                  : {} \r\n", graphics.card);
    Add("Adapter                        : {} \r\n", graphics.adapter);
    Add("Chip type                      : {} \r\n", graphics.chip);
    Add("DAC type                       : {} \r\n", graphics.dac);
    Add("Graphics memory                : {} MB\r\n", graphics.megabytes);
  }

  void AddRegisters() {
    const CONTEXT& c = request_.fault.context;
    text_ += "\r\n===============Register information=================== \r\n";
    text_ += "Context:\r\n";
    Add("RDI   :    0x{:08x}  RSI:   0x{:08x}  RAX  :   0x{:08x}\r\n", Low(c.Rdi), Low(c.Rsi), Low(c.Rax));
    Add("RBX   :    0x{:08x}  RCX:   0x{:08x}  RDX  :   0x{:08x}\r\n", Low(c.Rbx), Low(c.Rcx), Low(c.Rdx));
    Add("RIP   :    0x{:08x}  RBP:   0x{:08x}  SegCs:   0x{:08x}\r\n", Low(c.Rip), Low(c.Rbp), c.SegCs);
    Add("EFlags:    0x{:08x}  RSP:   0x{:08x}  SegSs:   0x{:08x}\r\n", c.EFlags, Low(c.Rsp), c.SegSs);
  }

  void AddCode() {
    BYTE code[kCodeBytes];
    text_ += "\r\n===============Bytes at CS:EIP=================== \r\n";
    const std::size_t count = snapshot_.Read(request_.fault.context.Rip, code, sizeof code);
    for (std::size_t i = 0; i < count; ++i) Add("{:02x} ", code[i]);
  }

  void AddModules() {
    text_ += "\r\n================Modules loaded================== \r\n";
    int number = 0;
    for (const CrashModule& module : snapshot_.Modules()) {
      ULONGLONG size = 0;
      LONGLONG changed = 0;
      const bool is_known = CrashFileFacts(module.file, size, changed);
      Add("Module {}\r\n{}\r\n", ++number, module.file);
      Add("Desired Base:   0x{:08x}    Image Size:   0x{:08x}\r\n", Low(module.desiredBase), module.imageSize);
      // Four times the size: existing readers of reports expect it.
      Add("Actual Base :   0x{:08x}    Image End :   0x{:08x}\r\n", Low(module.base),
          Low(module.base + 4ULL * module.imageSize));
      Add("Checksum    :   0x{:08x}    Time Stamp:   0x{:08x}\r\n", module.checksum, module.timeStamp);
      Add("File Size   :   {:<10}    File Time :   ", is_known ? DWORD(size) : 0U);
      if (is_known) AddTime(changed);
      text_ += "\r\n\r\n";
    }
  }

  const CrashRequest& request_;
  const CrashSnapshot& snapshot_;
  const SystemTexts* const system_;
  std::pmr::string text_;
};

}  // namespace

std::string VersionSection() {
  const long date = GetSldWorksDateCode();
  return fmt::format(
      "\r\n================== Kestrova ===================== \r\n"
      "Major version                  :   {} ( {} )\r\n"
      "Version code                   :   {} \r\n"
      "Build code                     :   {} \r\n"
      "TechDB code                    :   {} \r\n"
      "Storage version                :  {:8.4f} \r\n"
      "SOLIDWORKS version             :   {}  ({}/{:03}) \r\n",
      ToUtf8(CKVVersionInfo::QF_VERSION_MAJOR_FOR_SERVICE_PACK), ToUtf8(CKVVersionInfo::QF_SERVICE_PACK),
      DateText(CKVVersionInfo::QF_VERSION_FOR_HELP_ABOUT), DateText(CKVVersionInfo::QF_BUILD_DATE_FOR_HELP_ABOUT),
      DateText(CKVVersionInfo::QF_VERSION_FOR_TECHDB), CKVVersionInfo::QF_STORAGE_VERSION,
      ToUtf8(GetSldWorksRevisionNumber()), date / 1000, date % 1000);
}

std::string_view FaultingModule(const CrashSnapshot& snapshot, const CrashFault& fault) {
  const CrashModule* const module = snapshot.ModuleAt(fault.context.Rip);
  return module ? module->file : "Unknown dll";
}

std::pmr::string CrashReport(const CrashRequest& request, const CrashSnapshot& snapshot, const SystemTexts* system,
                             std::pmr::memory_resource* arena) {
  return Report(request, snapshot, system, arena).Text();
}
