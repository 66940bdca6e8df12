#include "mounttable.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class MountTables : public testing::Test
{
protected:
    void writeTable(const QByteArray& text) const
    {
        QFile file(tablePath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QString tablePath() const { return directory.filePath(QStringLiteral("mounts")); }

    QStringList mountsOf(const QByteArray& text)
    {
        writeTable(text);
        return table.findRemovableMounts();
    }

    QTemporaryDir directory;
    QStringList devices{QStringLiteral("/dev/sda")};
    int parses = 0;
    MountTable table{tablePath(), [this](const QString& name) {
                         ++parses;
                         return devices.contains(name);
                     }};
};

/// The mount point of a removable disk of this name.
QByteArray mountPoint(const QByteArray& name)
{
    return QByteArrayLiteral("/media/root") + '/' + name;
}

/// The line of a partition that is mounted as a removable disk.
QByteArray removable(const QByteArray& partition, const QByteArray& name, const QByteArray& fileSystem = "vfat")
{
    return partition + ' ' + mountPoint(name) + ' ' + fileSystem + " rw 0 0\n";
}

const QByteArray systemLine = "/dev/sda1 / ext4 rw 0 0\n";
const QByteArray diskLine = removable("/dev/sdb1", "USB");

const QStringList none;
const QStringList usb{mountPoint("USB")};

} // namespace

TEST_F(MountTables, FindsTheDiskBelowMediaRoot)
{
    EXPECT_EQ(mountsOf(systemLine + diskLine), usb);
}

TEST_F(MountTables, IgnoresADiskMountedElsewhere)
{
    EXPECT_EQ(mountsOf(systemLine + "/dev/sdb1 /mnt/usb vfat rw 0 0\n"), none);
}

TEST_F(MountTables, IgnoresTheOtherPartitionsOfTheSystemDisk)
{
    EXPECT_EQ(mountsOf(systemLine + removable("/dev/sda12", "DATA")), none);
}

TEST_F(MountTables, FindsNothingWithoutASystemDisk)
{
    EXPECT_EQ(mountsOf(diskLine), none);
    EXPECT_EQ(mountsOf(QByteArray("/dev/sda1 / xfs rw 0 0\n") + diskLine), none);
}

TEST_F(MountTables, FindsNothingWhenTheSystemDiskHasNoDeviceFile)
{
    devices.clear();
    EXPECT_EQ(mountsOf(systemLine + diskLine), none);
}

TEST_F(MountTables, TakesEveryKindOfExtFileSystemForTheSystemDisk)
{
    for (const char* fileSystem : {"ext2", "ext3", "ext4", "fuseblk.ext4"}) {
        EXPECT_EQ(mountsOf(QByteArray("/dev/sda1 / ") + fileSystem + " rw 0 0\n" + diskLine), usb) << fileSystem;
    }
    EXPECT_EQ(mountsOf(QByteArray("/dev/sda1 / EXT4 rw 0 0\n") + diskLine), none) << "case matters";
}

TEST_F(MountTables, TheLastExtPartitionNamesTheSystemDisk)
{
    devices.append(QStringLiteral("/dev/sdb"));
    // A removable disk that is itself ext4 takes the system disk's place, wherever it is mounted.
    EXPECT_EQ(mountsOf(systemLine + removable("/dev/sdb1", "USB", "ext4")), none);
    EXPECT_EQ(mountsOf(removable("/dev/sdb1", "USB", "ext4") + systemLine), usb);
}

TEST_F(MountTables, RemovesAllTrailingDigitsFromThePartition)
{
    EXPECT_EQ(mountsOf(QByteArray("/dev/sda123 / ext4 rw 0 0\n") + diskLine), usb);
}

TEST_F(MountTables, KeepsTheOrderOfTheTable)
{
    const QStringList expected{mountPoint("Z"), mountPoint("A")};
    EXPECT_EQ(mountsOf(removable("/dev/sdc1", "Z", "exfat") + systemLine + removable("/dev/sdb2", "A")), expected);
}

TEST_F(MountTables, SkipsLinesThatAreNoDiskPartition)
{
    const QByteArray others = "proc /proc proc rw 0 0\n" + removable("/dev/nvme0n1p1", "NVME")
        + removable("/dev/mmcblk0p1", "CARD") + removable("/dev/sdb", "WHOLE")
        + removable("/dev/sdaa1", "TWENTYSEVENTH") + removable(" /dev/sdb1", "INDENTED")
        + removable("tmpfs /dev/sdb1", "LATER");
    EXPECT_EQ(mountsOf(systemLine + others), none);
    EXPECT_EQ(mountsOf(systemLine + others + diskLine), usb);
}

TEST_F(MountTables, FieldsAreSeparatedByExactlyOneBlankOrTab)
{
    const QByteArray place = mountPoint("USB");
    EXPECT_EQ(mountsOf(systemLine + "/dev/sdb1\t" + place + "\tvfat\trw 0 0\n"), usb);
    EXPECT_EQ(mountsOf(systemLine + "/dev/sdb1  " + place + " vfat rw 0 0\n"), none);
    EXPECT_EQ(mountsOf(systemLine + "/dev/sdb1 " + place + " vfat\n"), none) << "no options";
    EXPECT_EQ(mountsOf(systemLine + "/dev/sdb1 " + place + " vfat \n"), usb) << "empty options";
}

TEST_F(MountTables, AMissingLastNewlineAndEmptyLinesDoNoHarm)
{
    EXPECT_EQ(mountsOf("\n\n" + systemLine + "\n" + diskLine.trimmed()), usb);
}

TEST_F(MountTables, KeepsTheKernelsEscapes)
{
    const char* const name = R"(MY\040DISK\011A\134B)";
    EXPECT_EQ(mountsOf(systemLine + removable("/dev/sdb1", name)), QStringList{mountPoint(name)});
}

TEST_F(MountTables, ReadsUtf8AndSurvivesWhatIsNot)
{
    EXPECT_EQ(mountsOf(systemLine + removable("/dev/sdb1", u8"硬盘")), QStringList{mountPoint(u8"硬盘")});
    EXPECT_EQ(mountsOf(systemLine + QByteArray("\xff\xfe\0\n", 4) + diskLine), usb);
}

TEST_F(MountTables, AnEmptyTableHasNoDisk)
{
    EXPECT_EQ(mountsOf(""), none);
    EXPECT_EQ(parses, 0);
}

TEST_F(MountTables, ParsesAgainOnlyWhenTheTextHasChanged)
{
    writeTable(systemLine + diskLine);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(table.findRemovableMounts(), usb);
    }
    EXPECT_EQ(parses, 1);

    EXPECT_EQ(mountsOf(systemLine), none);
    EXPECT_EQ(parses, 2);
    EXPECT_EQ(mountsOf(systemLine + diskLine), usb);
    EXPECT_EQ(parses, 3);
}

TEST_F(MountTables, ATableThatCannotBeReadForAWhileHasNoDisk)
{
    EXPECT_EQ(mountsOf(systemLine + diskLine), usb);
    QFile::remove(tablePath());
    EXPECT_EQ(table.findRemovableMounts(), none);
    EXPECT_EQ(mountsOf(systemLine + diskLine), usb) << "back, with the text of before";
}

TEST_F(MountTables, ReadsATableThatIsLargerThanOneRead)
{
    QByteArray text = systemLine;
    for (int i = 0; i < 20000; ++i) {
        text += "overlay /var/lib/containers/" + QByteArray::number(i) + " overlay rw 0 0\n";
    }
    EXPECT_EQ(mountsOf(text + diskLine), usb);
}

TEST(MountTable, ReadsTheKernelsOwnTableWhole)
{
    QFile file(QStringLiteral("/proc/self/mounts"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    ASSERT_EQ(file.size(), 0) << "what makes such files special";
    // The disks of this machine are unknown, so only that reading ends and says twice the same.
    MountTable table;
    EXPECT_EQ(table.findRemovableMounts(), table.findRemovableMounts());
}

TEST(MountTable, AFolderInPlaceOfTheTableHasNoDisk)
{
    EXPECT_EQ(MountTable(QStringLiteral("/proc")).findRemovableMounts(), none);
}
