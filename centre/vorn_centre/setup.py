"""Makes the database, or brings what is in it up to date; and its maintenance."""

import os
import pwd

import psycopg
from psycopg import sql
from psycopg.conninfo import conninfo_to_dict, make_conninfo

LOADER = "vorn-openfiles-load"
OWNER, READER = "vorn_owner", "vorn_reader"
SUPERUSER = "postgres"
FILES = ("tables.sql", "views.sql", "questions.sql", "maintenance.sql", "rights.sql")
FOLDER = os.path.join(os.path.dirname(os.path.dirname(os.path.realpath(__file__))), "sql")


def set_up(conninfo):
    tables, *others = [_text(file) for file in FILES]  # as root: the superuser may not get there
    become_superuser()
    name = conninfo_to_dict(conninfo)["dbname"]
    with psycopg.connect(make_conninfo(conninfo, dbname="postgres"), autocommit=True) as connection:
        _make_roles(connection)
        _make_database(connection, name)
    with psycopg.connect(conninfo) as connection:
        connection.execute(f"set role {OWNER}")
        if not _exists(connection, "select from pg_namespace where nspname = 'vorn_data'"):
            connection.execute(tables)
        connection.execute("drop schema if exists vorn cascade; create schema vorn")
        for text in others:
            connection.execute(text)
        connection.execute("select vorn_data.maintain()")


def maintain(conninfo):
    """Says what was done."""
    with psycopg.connect(conninfo, autocommit=True) as connection:
        made, dropped, expired, removed = connection.execute("select * from vorn_data.maintain()").fetchone()
        return f"months made {made}, months dropped {dropped}, holders expired {expired}, rows removed {removed}"


def become_superuser():
    """The user that PostgreSQL lets in as its superuser without a password."""
    if os.geteuid() == 0:
        entry = pwd.getpwnam(SUPERUSER)
        os.initgroups(SUPERUSER, entry.pw_gid)
        os.setgid(entry.pw_gid)
        os.setuid(entry.pw_uid)


def _exists(connection, query, *values):
    return connection.execute(query, values).fetchone() is not None


def _make_roles(connection):
    for role, kind in ((OWNER, "nologin"), (READER, "nologin"), (LOADER, "login")):
        if not _exists(connection, "select from pg_roles where rolname = %s", role):
            connection.execute(sql.SQL("create role {} " + kind).format(sql.Identifier(role)))


def _make_database(connection, name):
    database = sql.Identifier(name)
    if not _exists(connection, "select from pg_database where datname = %s", name):
        # Names are bytes: no language has a say in their order.
        connection.execute(sql.SQL("create database {} owner {} template template0 encoding 'UTF8' lc_collate 'C'"
                                   " lc_ctype 'C'").format(database, sql.Identifier(OWNER)))
    connection.execute(sql.SQL("revoke all on database {} from public").format(database))
    connection.execute(sql.SQL("grant connect on database {} to {}, {}").format(
        database, sql.Identifier(LOADER), sql.Identifier(READER)))


def _text(file):
    with open(os.path.join(FOLDER, file), encoding="utf-8") as text:
        return text.read()
