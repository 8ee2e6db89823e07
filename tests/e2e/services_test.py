"""Which service an open file belongs to, on the real control-group hierarchy."""

import os
import threading
import unittest

from harness.files import write_file
from harness.listing import open_files
from harness.processes import Holder
from harness.sample_host import needs, set_up_host
from harness.servers import SystemLog

LOCAL = "/usr/local/lib/systemd/system/"
VENDOR = "/usr/lib/systemd/system/"


def setUpModule():
    set_up_host()


class ServiceTest(unittest.TestCase):
    def hold(self, name, group, **options):
        holder = Holder(f"/volume1/share/{name}", group, **options)
        self.addCleanup(holder.stop)
        return holder

    def write(self, path, content, mode=0o644):
        self.addCleanup(os.unlink, path)
        return write_file(path, content, mode)

    def services(self, *arguments, **environment):
        listing = open_files(*arguments, environment=environment)
        return {file["filename"]: file["service"] for file in listing.files}


class ServicesByControlGroup(ServiceTest):
    GROUPS = {
        "ssh": "sshd.slice",
        "ssh-below": "sshd.slice/ssh.service",
        "smb": "SMBService.slice",
        "smb-below": "SMBService.slice/smbd.service",
        "ftp": "ftpd.slice",
        "ftp-nested": "ftpd.slice/ftpd-inner.slice/vsftpd.service",
        "rsync": "rsyncd.slice/rsync.service",
        "nested-slice-of-another": "SMBService.slice/sshd.slice/ssh.service",
        "system": "system.slice/cron.service",
        "user": "user.slice/user-1000.slice/session-1.scope",
        "unknown-slice": "nobody-knows.slice",
        "none": "",
    }

    def setUp(self):
        for name, group in self.GROUPS.items():
            self.hold(name, group)

    def expect(self, default, **texts):
        names = {"nested-slice-of-another": "smb"}
        return {name: texts.get(names.get(name, name.partition("-")[0]), default)
                for name in self.GROUPS}

    def test_the_slice_below_the_root_names_the_service(self):
        expected = self.expect("Internal service", ssh="SSH", smb="SMB", ftp="FTP", rsync="rsync")
        self.assertEqual(self.services(), expected)

    def test_services_are_named_in_german(self):
        expected = self.expect("Interner Dienst", ssh="SSH", smb="SMB", ftp="FTP", rsync="rsync")
        self.assertEqual(self.services(LC_ALL="de_DE.UTF-8"), expected)

    def test_services_are_named_in_japanese(self):
        expected = self.expect("内部サービス", ssh="SSH", smb="SMB", ftp="FTP", rsync="rsync")
        self.assertEqual(self.services(LANGUAGE="ja"), expected)

    def test_a_language_without_texts_falls_back_to_english(self):
        self.assertEqual(self.services(LC_ALL="xx_XX.UTF-8")["none"], "Internal service")


class ServicesByUnitFile(ServiceTest):
    def test_a_local_unit_file_hides_the_one_of_the_vendor(self):
        self.hold("file", "sshd.slice")
        self.assertEqual(self.services()["file"], "SSH")
        self.write(LOCAL + "sshd.slice", "[X-Vornalis]\nName=Remote shell\n")
        self.assertEqual(self.services()["file"], "Remote shell")

    def test_a_local_unit_file_without_a_name_hides_it_too(self):
        self.hold("file", "sshd.slice")
        self.write(LOCAL + "sshd.slice", "[Unit]\nDescription=nothing to see\n")
        self.assertEqual(self.services()["file"], "Internal service")

    def test_a_unit_without_a_text_shows_its_plain_name(self):
        self.hold("file", "custom.slice")
        self.write(VENDOR + "custom.slice",
                   "[X-Vornalis]\nName=Ours; and = theirs\nNameI18n=service:no_such_text\n")
        self.assertEqual(self.services()["file"], "Ours; and = theirs")

    def test_a_unit_is_translated_where_there_is_a_text(self):
        self.hold("file", "custom.slice")
        self.write(VENDOR + "custom.slice", "[X-Vornalis]\nName=Inetd\nNameI18n=service:inetd\n")
        self.assertEqual(self.services(LC_ALL="de_DE.UTF-8")["file"], "Internetdienste (inetd)")


class ServicesOfProcessesThatExit(ServiceTest):
    """A process ends after its descriptors were read and before its control group is.

    In between the shares are taken from Samba's testparm, so that is where it can be ended at
    exactly the right moment: with one job, as several ask for shares while descriptors are read.
    """

    def setUp(self):
        needs("testparm")
        self.log = SystemLog()
        self.addCleanup(self.log.close)
        self.write("/etc/samba/smb.conf", "[global]\n[share]\n path = /volume1/share\n")

    def kill_when_shares_are_read(self, holder):
        os.rename("/usr/bin/testparm", "/usr/bin/testparm.real")
        self.addCleanup(os.rename, "/usr/bin/testparm.real", "/usr/bin/testparm")
        # It is gone only when its parent, which is this process, has collected it.
        threading.Thread(target=holder.process.wait, daemon=True).start()
        write_file("/usr/bin/testparm", f"#!/bin/sh\nkill -KILL {holder.pid}\n"
                   f"while [ -e /proc/{holder.pid} ]; do sleep 0.01; done\n"
                   'exec /usr/bin/testparm.real "$@"\n', 0o755)

    def test_they_get_the_default_name_and_one_line_in_the_log(self):
        leaving = self.hold("leaving", "sshd.slice")
        self.hold("staying", "sshd.slice")
        self.assertEqual(self.services(), {"leaving": "SSH", "staying": "SSH"})
        self.assertEqual(self.log.take(), [])

        self.kill_when_shares_are_read(leaving)
        self.assertEqual(self.services("--jobs", "1"),
                         {"leaving": "Internal service", "staying": "SSH"})
        self.assertEqual(self.log.take(), [
            f"filehandle_get_service_name:141 Failed to open pid {leaving.pid} cgroup"])
