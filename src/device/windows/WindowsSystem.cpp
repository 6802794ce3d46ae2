#include "WindowsSystem.h"

namespace {

class HostSystem final : public WindowsSystem
{
public:
    HANDLE createFile(const wchar_t *path, DWORD access, DWORD share, DWORD disposition, DWORD flags) override
    {
        return CreateFileW(path, access, share, nullptr, disposition, flags, nullptr);
    }
    BOOL closeHandle(HANDLE handle) override { return CloseHandle(handle); }
    BOOL deviceIoControl(HANDLE handle, DWORD code, void *in, DWORD inSize, void *out, DWORD outSize,
                         DWORD *returned) override
    {
        return DeviceIoControl(handle, code, in, inSize, out, outSize, returned, nullptr);
    }
    void *virtualAlloc(SIZE_T size, DWORD allocationType, DWORD protect) override
    {
        return VirtualAlloc(nullptr, size, allocationType, protect);
    }
    BOOL virtualFree(void *address, SIZE_T size, DWORD freeType) override
    {
        return VirtualFree(address, size, freeType);
    }
    HANDLE findFirstVolume(wchar_t *name, DWORD length) override { return FindFirstVolumeW(name, length); }
    BOOL findNextVolume(HANDLE find, wchar_t *name, DWORD length) override
    {
        return FindNextVolumeW(find, name, length);
    }
    BOOL findVolumeClose(HANDLE find) override { return FindVolumeClose(find); }
    DWORD logicalDrives() override { return GetLogicalDrives(); }
    UINT driveType(const wchar_t *root) override { return GetDriveTypeW(root); }
    BOOL volumeNameForMountPoint(const wchar_t *mountPoint, wchar_t *name, DWORD length) override
    {
        return GetVolumeNameForVolumeMountPointW(mountPoint, name, length);
    }
    BOOL volumeInformation(const wchar_t *root, wchar_t *label, DWORD labelLength, DWORD *serial,
                           wchar_t *fileSystem, DWORD fileSystemLength) override
    {
        return GetVolumeInformationW(root, label, labelLength, serial, nullptr, nullptr, fileSystem,
                                     fileSystemLength);
    }
    BOOL diskFreeSpace(const wchar_t *root, DWORD *sectorsPerCluster, DWORD *bytesPerSector, DWORD *freeClusters,
                       DWORD *totalClusters) override
    {
        return GetDiskFreeSpaceW(root, sectorsPerCluster, bytesPerSector, freeClusters, totalClusters);
    }
    BOOL setFilePointer(HANDLE handle, LARGE_INTEGER distance, DWORD method) override
    {
        return SetFilePointerEx(handle, distance, nullptr, method);
    }
    BOOL readFile(HANDLE handle, void *buffer, DWORD length, DWORD *read) override
    {
        return ReadFile(handle, buffer, length, read, nullptr);
    }
};

} // namespace

std::shared_ptr<WindowsSystem> WindowsSystem::host()
{
    static const std::shared_ptr<WindowsSystem> system = std::make_shared<HostSystem>();
    return system;
}
