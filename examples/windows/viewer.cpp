// A live view of one camera: start, stop, shutter, gains, white balance, mirrors, save. Plain Win32;
// everything about the camera goes through the registered ZELCam.DLL. Set ZELCAM_SIM=13 to see a simulated
// camera.
#include <windows.h>
// These need windows.h first.
#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>
#include <cwchar>
#include <string>
#include <utility>
#include <vector>

#include "frame_sink.h"

namespace {

constexpr wchar_t kTitle[] = L"ZELCam viewer";
constexpr COLORREF kDark = RGB(32, 34, 38);
constexpr int kPanelWidth = 264, kMargin = 14, kRow = 24;  // at 96 dpi
constexpr LONG kCallbackPerFrame = 0, kGreyWorld = 1, kJpeg = 1;
constexpr LONG kPhysicalDrives = 6;  // the indexes of the USB 3.0 disk cameras, which no others have
constexpr LONG kRedGain = 14, kBlueGain = 16;  // property ids
constexpr UINT_PTR kStatusTimer = 1, kBalanceTimer = 2;
constexpr UINT kStatusMs = 500, kBalanceMs = 600;  // the latter covers some frames

/// A setting that has a range.
struct Setting {
  const wchar_t* label;
  HRESULT (*range)(IZELProperty&, LONG* low, LONG* high);
  HRESULT (*get)(IZELProperty&, LONG* value);
  HRESULT (*set)(IZELProperty&, LONG value);
};
constexpr Setting kSettings[] = {
    {L"Shutter", [](IZELProperty& p, LONG* low, LONG* high) { return p.GetShutterRange(low, high); },
     [](IZELProperty& p, LONG* value) { return p.GetShutter(value); },
     [](IZELProperty& p, LONG value) { return p.SetShutter(value); }},
    {L"Gain", [](IZELProperty& p, LONG* low, LONG* high) { return p.GetDigitalGlobalGainRange(low, high); },
     [](IZELProperty& p, LONG* value) { return p.GetDigitalGlobalGain(value); },
     [](IZELProperty& p, LONG value) { return p.SetDigitalGlobalGain(value); }},
    {L"Analog gain",
     [](IZELProperty& p, LONG* low, LONG* high) { return p.GetAnalogGlobalGainRange(low, high); },
     [](IZELProperty& p, LONG* value) { return p.GetAnalogGlobalGain(value); },
     [](IZELProperty& p, LONG value) { return p.SetAnalogGlobalGain(value); }},
    {L"Red gain",
     [](IZELProperty& p, LONG* low, LONG* high) { return p.GetColorGainRange(kRedGain, low, high); },
     [](IZELProperty& p, LONG* value) { return p.GetColorGain(kRedGain, value); },
     [](IZELProperty& p, LONG value) { return p.SetColorGain(kRedGain, value); }},
    {L"Blue gain",
     [](IZELProperty& p, LONG* low, LONG* high) { return p.GetColorGainRange(kBlueGain, low, high); },
     [](IZELProperty& p, LONG* value) { return p.GetColorGain(kBlueGain, value); },
     [](IZELProperty& p, LONG value) { return p.SetColorGain(kBlueGain, value); }},
};
constexpr int kSettingCount = static_cast<int>(std::size(kSettings));

enum ControlId : int { kCameraList = 100, kStart, kStop, kBalance, kMirrorRows, kMirrorColumns, kSave };

class Viewer {
 public:
  /// False, after telling the user, when the library can't be used.
  bool Create(HINSTANCE instance);
  HWND Window() const { return window_; }

 private:
  struct Found {
    LONG type, index;
    std::wstring name;
  };
  struct SliderRow {
    HWND label, bar, value;
  };

  static LRESULT CALLBACK OnWindowMessage(HWND window, UINT message, WPARAM word, LPARAM pointer);
  static LRESULT CALLBACK OnPictureMessage(HWND window, UINT message, WPARAM word, LPARAM pointer);
  LRESULT OnMessage(UINT message, WPARAM word, LPARAM pointer);

  HWND Add(const wchar_t* kind, const wchar_t* text, DWORD style, int id, DWORD extended = 0);
  void CreateControls();
  void Layout();
  void Paint();
  void OnCommand(int id, int notification);

  bool Answers(IZELCamera& candidate, LONG type, LONG index);
  void FindCameras();
  void Open(const Found& found);
  void Close();
  void Start();
  void Stop();
  void EndBalance();
  void ShowSettings();
  void OnSlider(HWND bar);
  void OnFrame();
  void Rescale();
  void AskWhereToSave();
  void SaveTo(const std::wstring& path);
  void ShowStatus();
  void Say(const std::wstring& text);
  int Scaled(int pixels) const { return MulDiv(pixels, dpi_, 96); }

  HINSTANCE instance_ = nullptr;
  HWND window_ = nullptr, picture_ = nullptr, status_ = nullptr;
  HWND cameras_ = nullptr, start_ = nullptr, stop_ = nullptr, balance_ = nullptr;
  HWND mirrorRows_ = nullptr, mirrorColumns_ = nullptr, save_ = nullptr;
  SliderRow sliders_[kSettingCount] = {};
  HFONT font_ = nullptr;
  int dpi_ = 96;

  Com<IZELBuilder> builder_;
  Com<IZELCamera> camera_;
  Com<IZELProperty> settings_;
  std::vector<Found> found_;
  FrameSink sink_;
  Pixels shown_;  ///< the frame in the size of the window
  bool playing_ = false;
  bool stopping_ = false;  ///< `Stop` dispatches messages while it waits
  std::wstring saveNext_;  ///< where the next frame is to be saved
  unsigned framesBefore_ = 0;
  ULONGLONG countedAt_ = 0;  ///< milliseconds
};

Viewer* viewer = nullptr;

bool Viewer::Create(HINSTANCE instance) {
  instance_ = instance;
  viewer = this;
  const HRESULT made = CoCreateInstance(__uuidof(ZELBuilder), nullptr, CLSCTX_INPROC_SERVER,
                                        __uuidof(IZELBuilder), reinterpret_cast<void**>(builder_.Put()));
  if (FAILED(made)) {
    MessageBoxW(nullptr, L"ZELCam.DLL can't be used. Register it:\n\n    regsvr32 ZELCam.DLL", kTitle,
                MB_ICONERROR);
    return false;
  }
  const HDC screen = GetDC(nullptr);
  dpi_ = GetDeviceCaps(screen, LOGPIXELSY);
  ReleaseDC(nullptr, screen);
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof metrics;
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
  font_ = CreateFontIndirectW(&metrics.lfMessageFont);

  WNDCLASSW kind{};
  kind.hInstance = instance;
  kind.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  kind.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  kind.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
  kind.lpfnWndProc = OnWindowMessage;
  kind.lpszClassName = L"ZELCamViewer";
  RegisterClassW(&kind);
  kind.hbrBackground = nullptr;
  kind.lpfnWndProc = OnPictureMessage;
  kind.lpszClassName = L"ZELCamPicture";
  RegisterClassW(&kind);
  window_ = CreateWindowW(L"ZELCamViewer", kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT,
                          CW_USEDEFAULT, Scaled(1060), Scaled(700), nullptr, nullptr, instance, nullptr);
  CreateControls();
  sink_.PostTo(window_);
  FindCameras();
  Layout();
  SetTimer(window_, kStatusTimer, kStatusMs, nullptr);
  return true;
}

// ---- window and controls

LRESULT CALLBACK Viewer::OnWindowMessage(HWND window, UINT message, WPARAM word, LPARAM pointer) {
  return viewer->window_ ? viewer->OnMessage(message, word, pointer)
                         : DefWindowProcW(window, message, word, pointer);
}

LRESULT CALLBACK Viewer::OnPictureMessage(HWND window, UINT message, WPARAM word, LPARAM pointer) {
  if (message == WM_ERASEBKGND) return 1;  // `Paint` covers everything
  if (message == WM_PAINT) return viewer->Paint(), 0;
  return DefWindowProcW(window, message, word, pointer);
}

LRESULT Viewer::OnMessage(UINT message, WPARAM word, LPARAM pointer) {
  switch (message) {
    case kFrameArrived:
      OnFrame();
      return 0;
    case WM_SIZE:
      Layout();
      return 0;
    case WM_GETMINMAXINFO:
      reinterpret_cast<MINMAXINFO*>(pointer)->ptMinTrackSize = {Scaled(640), Scaled(560)};
      return 0;
    case WM_HSCROLL:
      OnSlider(reinterpret_cast<HWND>(pointer));
      return 0;
    case WM_COMMAND:
      OnCommand(LOWORD(word), HIWORD(word));
      return 0;
    case WM_TIMER:
      if (word == kBalanceTimer) EndBalance();
      if (word == kStatusTimer) ShowStatus();
      return 0;
    case WM_CLOSE:
      if (stopping_) return PostMessageW(window_, WM_CLOSE, 0, 0), 0;
      Close();
      DestroyWindow(window_);
      return 0;
    case WM_DESTROY:
      DeleteObject(font_);
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window_, message, word, pointer);
  }
}

HWND Viewer::Add(const wchar_t* kind, const wchar_t* text, DWORD style, int id, DWORD extended) {
  const HWND control =
      CreateWindowExW(extended, kind, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, window_,
                      reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), instance_, nullptr);
  SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_), FALSE);
  return control;
}

void Viewer::CreateControls() {
  picture_ = Add(L"ZELCamPicture", L"", 0, 0);
  cameras_ = Add(WC_COMBOBOXW, L"", CBS_DROPDOWNLIST | WS_TABSTOP | WS_VSCROLL, kCameraList);
  start_ = Add(WC_BUTTONW, L"Start", WS_TABSTOP, kStart);
  stop_ = Add(WC_BUTTONW, L"Stop", WS_TABSTOP, kStop);
  for (int n = 0; n < kSettingCount; ++n) {
    sliders_[n] = {Add(WC_STATICW, kSettings[n].label, 0, 0),
                   Add(TRACKBAR_CLASSW, L"", TBS_HORZ | TBS_NOTICKS | WS_TABSTOP, 0),
                   Add(WC_STATICW, L"", SS_RIGHT, 0)};
  }
  balance_ = Add(WC_BUTTONW, L"White balance", WS_TABSTOP, kBalance);
  mirrorRows_ = Add(WC_BUTTONW, L"Mirror left and right", BS_AUTOCHECKBOX | WS_TABSTOP, kMirrorRows);
  mirrorColumns_ = Add(WC_BUTTONW, L"Mirror top and bottom", BS_AUTOCHECKBOX | WS_TABSTOP, kMirrorColumns);
  save_ = Add(WC_BUTTONW, L"Save picture...", WS_TABSTOP, kSave);
  status_ = Add(STATUSCLASSNAMEW, L"", SBARS_SIZEGRIP, 0);
}

void Viewer::Layout() {
  RECT client{}, bar{};
  GetClientRect(window_, &client);
  SendMessageW(status_, WM_SIZE, 0, 0);
  GetWindowRect(status_, &bar);
  const int bottom = client.bottom - (bar.bottom - bar.top);
  const int panel = Scaled(kPanelWidth), margin = Scaled(kMargin), row = Scaled(kRow);
  const int left = client.right - panel + margin, width = panel - 2 * margin;
  const int parts[] = {client.right - panel, -1};
  SendMessageW(status_, SB_SETPARTS, 2, reinterpret_cast<LPARAM>(parts));
  MoveWindow(picture_, 0, 0, client.right - panel, bottom, TRUE);

  int y = margin;
  MoveWindow(cameras_, left, y, width, 12 * row, TRUE);
  y += row + margin;
  MoveWindow(start_, left, y, (width - margin) / 2, row + 4, TRUE);
  MoveWindow(stop_, left + (width + margin) / 2, y, (width - margin) / 2, row + 4, TRUE);
  y += row + 4 + margin;
  for (const SliderRow& slider : sliders_) {
    if (!(GetWindowLongPtrW(slider.bar, GWL_STYLE) & WS_VISIBLE)) continue;
    MoveWindow(slider.label, left, y, width / 2, row - 4, TRUE);
    MoveWindow(slider.value, left + width / 2, y, width / 2, row - 4, TRUE);
    MoveWindow(slider.bar, left - Scaled(8), y + row - 4, width + Scaled(16), row + 4, TRUE);
    y += 2 * row + margin / 2;
  }
  MoveWindow(balance_, left, y, width, row + 4, TRUE);
  y += row + 4 + margin;
  MoveWindow(mirrorRows_, left, y, width, row, TRUE);
  MoveWindow(mirrorColumns_, left, y + row, width, row, TRUE);
  MoveWindow(save_, left, bottom - margin - row - 8, width, row + 8, TRUE);
  if (!playing_) Rescale();  // while playing the next frame does that
}

void Viewer::Paint() {
  PAINTSTRUCT paint;
  const HDC context = BeginPaint(picture_, &paint);
  RECT area{};
  GetClientRect(picture_, &area);
  const int x = (area.right - shown_.width) / 2, y = (area.bottom - shown_.height) / 2;
  if (camera_ && !shown_.IsEmpty()) {
    // The library draws at the origin.
    POINT before{};
    SetViewportOrgEx(context, x, y, &before);
    camera_->SetDIBits(HandleToLong(context), shown_.width, shown_.height, shown_.Array());
    SetViewportOrgEx(context, before.x, before.y, nullptr);
    ExcludeClipRect(context, x, y, x + shown_.width, y + shown_.height);
  }
  const HBRUSH dark = CreateSolidBrush(kDark);
  FillRect(context, &area, dark);
  DeleteObject(dark);
  EndPaint(picture_, &paint);
}

void Viewer::OnCommand(int id, int notification) {
  if (stopping_) return;
  switch (id) {
    case kCameraList:
      if (notification == CBN_SELCHANGE) Open(found_[SendMessageW(cameras_, CB_GETCURSEL, 0, 0)]);
      break;
    case kStart:
      Start();
      break;
    case kStop:
      Stop();
      break;
    case kBalance:
      if (settings_ && SUCCEEDED(settings_->SetAutoWhiteBalance(kGreyWorld))) {
        SetTimer(window_, kBalanceTimer, kBalanceMs, nullptr);
      }
      break;
    case kMirrorRows:
      if (settings_) settings_->SetHorMirror(SendMessageW(mirrorRows_, BM_GETCHECK, 0, 0) == BST_CHECKED);
      break;
    case kMirrorColumns:
      if (settings_) settings_->SetVerMirror(SendMessageW(mirrorColumns_, BM_GETCHECK, 0, 0) == BST_CHECKED);
      break;
    case kSave:
      AskWhereToSave();
      break;
  }
}

// ---- the camera

/// Whether a camera of this type answers at the index, which the candidate is asked for.
bool Viewer::Answers(IZELCamera& candidate, LONG type, LONG index) {
  if (FAILED(candidate.IsCameraValid(index, nullptr))) return false;
  LONG indexes = 0;
  candidate.GetMaxCameraNum(&indexes);
  if (indexes != kPhysicalDrives) return true;
  // To the USB 3.0 disk types any disk looks like a camera; the catalogue asks the disk which one it is.
  LONG found = 0;
  builder_->GetUsb3CameraType(index, &found);
  return found == type;
}

/// All cameras that answer; the first one is opened and started.
void Viewer::FindCameras() {
  LONG types = 0;
  builder_->GetCameraTypeNum(&types);
  for (LONG type = 0; type < types; ++type) {
    Com<IZELCamera> candidate;
    LONG indexes = 0;
    if (FAILED(builder_->CreateCamera(type, candidate.Put()))) continue;
    candidate->GetMaxCameraNum(&indexes);
    for (LONG index = 0; index < indexes; ++index) {
      if (!Answers(*candidate, type, index)) continue;
      BSTR name = nullptr;
      builder_->GetCameraName(type, &name);
      found_.push_back(
          {type, index, std::wstring(name ? name : L"") + L"  (" + std::to_wstring(index) + L")"});
      SysFreeString(name);
      SendMessageW(cameras_, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(found_.back().name.c_str()));
    }
  }
  if (found_.empty()) {
    ShowSettings();
    return Say(L"No camera answers. ZELCAM_SIM=13 in the environment brings a simulated one.");
  }
  SendMessageW(cameras_, CB_SETCURSEL, 0, 0);
  Open(found_[0]);
}

void Viewer::Open(const Found& found) {
  Close();
  if (FAILED(builder_->CreateCamera(found.type, camera_.Put())) ||
      FAILED(camera_->OpenCamera(found.index, nullptr))) {
    Close();
    return Say(L"The camera can't be opened: " + found.name);
  }
  camera_->GetProperty(settings_.Put());
  camera_->SetObserver(&sink_);
  Say(found.name);
  Start();
  ShowSettings();
}

void Viewer::Close() {
  Stop();
  settings_.Reset();
  if (camera_) camera_->SetObserver(nullptr);
  camera_.Reset();
}

void Viewer::Start() {
  if (!camera_ || playing_) return;
  LONG x = 0, y = 0, width = 0, height = 0;
  settings_->GetROI(&x, &y, &width, &height);
  sink_.frame.Resize(width, height);
  sink_.frames = framesBefore_ = 0;
  countedAt_ = GetTickCount64();
  sink_.GiveBack();
  camera_->SetBufferSamples(kCallbackPerFrame);
  playing_ = SUCCEEDED(camera_->Play(nullptr));
  if (!playing_) Say(L"The camera does not start.");
  EnableWindow(start_, !playing_);
  EnableWindow(stop_, playing_);
}

void Viewer::Stop() {
  if (!playing_) return;
  stopping_ = true;
  camera_->Stop(nullptr);
  stopping_ = playing_ = false;
  EnableWindow(start_, TRUE);
  EnableWindow(stop_, FALSE);
  if (!saveNext_.empty()) SaveTo(std::exchange(saveNext_, {}));
  ShowStatus();
}

/// The automatic gains stay as set ones.
void Viewer::EndBalance() {
  KillTimer(window_, kBalanceTimer);
  if (!settings_) return;
  LONG gains[2] = {};
  const HRESULT red = settings_->GetColorGain(kRedGain, &gains[0]);
  const HRESULT blue = settings_->GetColorGain(kBlueGain, &gains[1]);
  settings_->SetAutoWhiteBalance(0);
  if (SUCCEEDED(red)) settings_->SetColorGain(kRedGain, gains[0]);
  if (SUCCEEDED(blue)) settings_->SetColorGain(kBlueGain, gains[1]);
  ShowSettings();
}

/// Ranges and values of all controls; sliders that the camera does not offer disappear.
void Viewer::ShowSettings() {
  for (int n = 0; n < kSettingCount; ++n) {
    LONG low = 0, high = 0, value = 0;
    const bool offered = settings_ && SUCCEEDED(kSettings[n].range(*settings_, &low, &high)) && low < high &&
                         SUCCEEDED(kSettings[n].get(*settings_, &value));
    for (const HWND control : {sliders_[n].label, sliders_[n].bar, sliders_[n].value}) {
      ShowWindow(control, offered ? SW_SHOW : SW_HIDE);
    }
    SendMessageW(sliders_[n].bar, TBM_SETRANGEMIN, FALSE, low);
    SendMessageW(sliders_[n].bar, TBM_SETRANGEMAX, FALSE, high);
    SendMessageW(sliders_[n].bar, TBM_SETPAGESIZE, 0, std::max<LONG>(1, (high - low) / 20));
    SendMessageW(sliders_[n].bar, TBM_SETPOS, TRUE, value);
    SetWindowTextW(sliders_[n].value, std::to_wstring(value).c_str());
  }
  const auto check = [&](HWND box, auto get) {
    LONG on = 0;
    EnableWindow(box, settings_ && SUCCEEDED(((*settings_).*get)(&on)));
    SendMessageW(box, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
  };
  check(mirrorRows_, &IZELProperty::GetHorMirror);
  check(mirrorColumns_, &IZELProperty::GetVerMirror);
  EnableWindow(balance_, static_cast<bool>(settings_));
  EnableWindow(save_, static_cast<bool>(settings_));
  EnableWindow(start_, settings_ && !playing_);
  EnableWindow(stop_, playing_);
  Layout();
}

void Viewer::OnSlider(HWND bar) {
  for (int n = 0; n < kSettingCount; ++n) {
    if (sliders_[n].bar != bar || !settings_) continue;
    const auto value = static_cast<LONG>(SendMessageW(bar, TBM_GETPOS, 0, 0));
    if (FAILED(kSettings[n].set(*settings_, value))) Say(std::wstring(kSettings[n].label) + L" is refused.");
    SetWindowTextW(sliders_[n].value, std::to_wstring(value).c_str());
  }
}

// ---- pictures

void Viewer::OnFrame() {
  Rescale();
  if (!saveNext_.empty()) SaveTo(std::exchange(saveNext_, {}));
  sink_.GiveBack();
}

/// Brings the frame to the size of the window, keeping its shape.
void Viewer::Rescale() {
  const Pixels& frame = sink_.frame;
  if (!camera_ || frame.IsEmpty() || sink_.frames == 0) return;
  RECT area{};
  GetClientRect(picture_, &area);
  if (area.right < 2 || area.bottom < 2) return;
  const bool wide = std::int64_t{area.right} * frame.height < std::int64_t{area.bottom} * frame.width;
  const LONG width = wide ? area.right : MulDiv(area.bottom, frame.width, frame.height);
  const LONG height = wide ? MulDiv(area.right, frame.height, frame.width) : area.bottom;
  shown_.Resize(std::max<LONG>(width, 1), std::max<LONG>(height, 1));
  if (shown_.IsEmpty()) return;
  camera_->Resample(frame.Array(), frame.width, frame.height, shown_.Array(), shown_.width, shown_.height, 0);
  InvalidateRect(picture_, nullptr, FALSE);
}

void Viewer::AskWhereToSave() {
  wchar_t path[MAX_PATH] = L"picture.jpg";
  OPENFILENAMEW ask{};
  ask.lStructSize = sizeof ask;
  ask.hwndOwner = window_;
  ask.lpstrFilter = L"JPEG picture\0*.jpg\0Bitmap\0*.bmp\0";
  ask.lpstrFile = path;
  ask.nMaxFile = MAX_PATH;
  ask.lpstrDefExt = L"jpg";
  ask.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
  if (!GetSaveFileNameW(&ask)) return;
  // A running frame may be overwritten at any moment: the next one is saved while it belongs to the window.
  if (playing_) {
    saveNext_ = path;
  } else {
    SaveTo(path);
  }
}

void Viewer::SaveTo(const std::wstring& path) {
  const Pixels& frame = sink_.frame;
  const bool bitmap = path.size() > 4 && _wcsicmp(path.c_str() + path.size() - 4, L".bmp") == 0;
  const BSTR name = SysAllocString(path.c_str());
  const HRESULT saved =
      sink_.frames == 0 || !camera_
          ? E_FAIL
          : camera_->SaveImage(name, frame.Array(), frame.width, frame.height, 32, 0, bitmap ? 0 : kJpeg, 0);
  SysFreeString(name);
  Say((SUCCEEDED(saved) ? L"Saved: " : L"Can't be saved: ") + path);
}

void Viewer::ShowStatus() {
  const unsigned frames = sink_.frames;
  const ULONGLONG now = GetTickCount64();
  wchar_t text[160];
  if (playing_ && now > countedAt_) {
    swprintf(text, std::size(text), L"%ls - %.1f frames/s", kTitle,
             1000.0 * (frames - framesBefore_) / static_cast<double>(now - countedAt_));
    framesBefore_ = frames;
    countedAt_ = now;
  } else {
    swprintf(text, std::size(text), L"%ls", kTitle);
  }
  SetWindowTextW(window_, text);
  if (!camera_) return;
  swprintf(text, std::size(text), L"%ld x %ld pixels, %u frames%ls", sink_.frame.width, sink_.frame.height,
           frames, playing_ ? L"" : L", stopped");
  SendMessageW(status_, SB_SETTEXTW, 1, reinterpret_cast<LPARAM>(text));
}

void Viewer::Say(const std::wstring& text) {
  SendMessageW(status_, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int show) {
  INITCOMMONCONTROLSEX controls{sizeof controls, ICC_BAR_CLASSES | ICC_STANDARD_CLASSES};
  InitCommonControlsEx(&controls);
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int exitCode = 1;
  {
    Viewer window;
    if (window.Create(instance)) {
      ShowWindow(window.Window(), show);
      MSG message;
      while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (IsDialogMessageW(window.Window(), &message)) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
      }
      exitCode = 0;
    }
  }
  CoUninitialize();
  return exitCode;
}
