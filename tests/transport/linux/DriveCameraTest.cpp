// Whole cameras behind a file: each sector goes through it and the system's own reads and writes, between the
// library and a simulated camera.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "platform/PassingDriverHost.h"
#include "transport/linux/WholeCamera.h"

namespace zel {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

/// The far end reads what was written, and writes what is going to be read.
class DriveHandle : public DriverHandle {
 public:
  DriveHandle(std::unique_ptr<DriverHandle> system, std::unique_ptr<DriverHandle> camera, int file)
      : system_(std::move(system)), camera_(std::move(camera)), file_(file) {}

  DriverResult Control(std::uint32_t, std::span<const std::uint8_t>, std::span<std::uint8_t>) override {
    return DriverResult::Failed(DriverError::NotSupported);
  }
  std::unique_ptr<PendingControl> BeginControl(std::uint32_t, std::span<const std::uint8_t>,
                                               std::span<std::uint8_t>, DriverError* error) override {
    *error = DriverError::NotSupported;
    return nullptr;
  }
  DriverResult Seek(std::uint64_t position) override {
    position_ = position;
    (void)camera_->Seek(position);
    return system_->Seek(position);
  }
  DriverResult Read(std::span<std::uint8_t> out) override {
    Bytes sectors(out.size());
    if (const DriverResult result = camera_->Read(sectors); !result.ok) return result;
    EXPECT_EQ(pwrite(file_, sectors.data(), sectors.size(), static_cast<off_t>(position_)),
              std::ssize(sectors));
    return system_->Read(out);
  }
  DriverResult Write(std::span<const std::uint8_t> in) override {
    const DriverResult written = system_->Write(in);
    Bytes sectors(in.size());
    EXPECT_EQ(pread(file_, sectors.data(), sectors.size(), static_cast<off_t>(position_)),
              std::ssize(sectors));
    return written.ok ? camera_->Write(sectors) : written;
  }

 private:
  const std::unique_ptr<DriverHandle> system_, camera_;
  const int file_;
  std::uint64_t position_ = 0;
};

class DriveHost : public PassingDriverHost {
 public:
  DriveHost(DriverHost& camera, int file)
      : PassingDriverHost(SystemDriverHost()), camera_(camera), file_(file) {}

  std::unique_ptr<DriverHandle> Open(const OpenRequest& request, DriverError* error) override {
    auto system = PassingDriverHost::Open(request, error);
    auto camera = system ? camera_.Open(request, error) : nullptr;
    if (!camera) return nullptr;
    return std::make_unique<DriveHandle>(std::move(system), std::move(camera), file_);
  }

 private:
  DriverHost& camera_;
  const int file_;
};

class DriveCameras : public testing::Test {
 protected:
  DriveCameras() {
    std::string name = (fs::current_path() / "zel-drive-XXXXXX").string();
    file_ = mkstemp(name.data());
    path_ = name;
    EXPECT_EQ(ftruncate(file_, 64 << 20), 0);
    setenv("ZELCAM_DRIVES", ("PhysicalDrive0=" + name + ",E:=" + name).c_str(), 1);
  }
  ~DriveCameras() override {
    unsetenv("ZELCAM_DRIVES");
    close(file_);
    fs::remove(path_);
  }

  int file_ = -1;
  fs::path path_;
};

TEST_F(DriveCameras, BringFramesUntilTheyAreUnplugged) {
  for (const LONG mode : {kDeliverOnDemand, kDeliverQueue}) {
    for (const SimCameraAddress address : {SimCameraAddress{78, 0}, {61, 0}, {1, 'E'}, {39, 'E'}}) {
      SCOPED_TRACE(testing::Message() << "type " << address.type << ", mode " << mode);
      const auto cameras = test::FarEnd(address);
      DriveHost host(*cameras, file_);
      const ScopedDriverHost installed(host);
      const auto camera = test::RunSession(address, mode, *cameras);
      EXPECT_EQ(camera->Play(), 1);
      cameras->Camera(address)->Unplug();
      fs::resize_file(path_, 0);
      // A SATA camera that is gone looks like one that has no frame.
      EXPECT_TRUE(address.index == 'E' || test::RunsDry(*camera));
      EXPECT_EQ(camera->Stop(), 1);
      LONG connected = 1;
      camera->IsCameraConnected(&connected);
      EXPECT_EQ(connected, 0);
      fs::resize_file(path_, 64 << 20);
    }
  }
}

}  // namespace
}  // namespace zel
