"""Files to write."""

import os


def touch(path, content=b""):
    """A file, empty or with content, below folders made for it; gives the path."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content.encode() if isinstance(content, str) else content)
    return path


def write_file(path, content=b"", mode=0o644):
    """The same with a mode, whatever the umask is or the file had."""
    os.chmod(touch(path, content), mode)
    return path
