"""The command line of vorn-openfiles-load."""

import argparse
import sys

import psycopg

from vorn_centre import setup
from vorn_centre.loader import Loader

DATABASE = "dbname=vornopenfiles"
JOURNALS = "/var/lib/vorn-openfiles-centre/journals"


def arguments_of(argv):
    parser = argparse.ArgumentParser(
        prog="vorn-openfiles-load", allow_abbrev=False,
        description="Loads the events of many hosts from their journals into PostgreSQL.")
    parser.add_argument("--journals", metavar="FOLDER", default=JOURNALS,
                        help="folder of the journals that systemd-journal-remote writes (default: %(default)s)")
    parser.add_argument("--database", metavar="CONNINFO", default=DATABASE,
                        help='as libpq takes it (default: "%(default)s")')
    action = parser.add_mutually_exclusive_group()
    action.add_argument("--once", action="store_true", help="load what is there, then end")
    action.add_argument("--setup", action="store_true",
                        help="make the database and its roles, or bring them up to date; as root or postgres")
    action.add_argument("--maintain", action="store_true", help="make and drop months, let personal data expire")
    arguments = parser.parse_args(argv)
    if "dbname" not in _conninfo(parser, arguments.database):
        parser.error(f"--database names no dbname: {arguments.database}")
    return arguments


def _conninfo(parser, text):
    try:
        return psycopg.conninfo.conninfo_to_dict(text)
    except psycopg.ProgrammingError as error:
        return parser.error(f"--database: {str(error).strip()}")


def act(arguments):
    if arguments.setup:
        setup.set_up(arguments.database)
    elif arguments.maintain:
        print(setup.maintain(arguments.database))
    else:
        Loader(arguments.database, arguments.journals).run(arguments.once)


def main(argv):
    arguments = arguments_of(argv)
    try:
        act(arguments)
    except (psycopg.Error, OSError, KeyError) as error:
        print(f"vorn-openfiles-load: {str(error).strip()}", file=sys.stderr)
        return 1
    return 0
