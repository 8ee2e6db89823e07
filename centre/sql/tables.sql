-- What the loader keeps. Nobody else reads or writes these: questions go to the views in schema vorn.
--
-- The loader is the only writer and numbers nodes, runs and holders itself. Texts compare as bytes. Bytes
-- that are no UTF-8, and NUL, stand as \xNN in them, and a backslash as two.

create schema vorn_data;

create table vorn_data.settings (
    one boolean primary key default true check (one),
    retention_months integer not null default 13 check (retention_months > 0),  -- whole months beside this one
    personal_days integer not null default 90 check (personal_days >= 0),       -- users and client hosts are known
    refused_days integer not null default 30 check (refused_days >= 0),         -- entries that were put aside
    journal_days integer not null default 2 check (journal_days >= 0),          -- journal files that are loaded
    heartbeat interval not null default '60 seconds'                            -- as the hosts send them
);
insert into vorn_data.settings default values;

create table vorn_data.nodes (
    id integer primary key,
    name text collate "C" not null unique,
    last_at timestamptz,              -- of its last event, by its own clock
    last_heard timestamptz not null,  -- when that was loaded, by this host's clock
    refused bigint not null default 0
) with (fillfactor = 50);

-- A run of the command on a node numbers its events: last_seq says which have been loaded.
create table vorn_data.runs (
    id integer primary key,
    node integer not null references vorn_data.nodes,
    run uuid not null,
    started_at timestamptz not null,
    last_at timestamptz not null,
    last_seq bigint not null,
    events bigint not null,
    repeated bigint not null default 0,
    pathless bigint not null default 0,
    ended_at timestamptz,
    stopped boolean not null default false,
    volumes text[],
    unwatched text[],
    unique (node, run)
) with (fillfactor = 50);

-- How far each journal file has been read.
create table vorn_data.positions (
    inode bigint primary key,
    node integer not null references vorn_data.nodes,
    cursor text not null
) with (fillfactor = 50);

create table vorn_data.open_files (
    id bigint primary key,
    node integer not null references vorn_data.nodes,
    run integer not null references vorn_data.runs,
    pid integer not null,
    process_start bigint,
    opened_at timestamptz not null,
    began_before boolean not null,
    opens integer not null,           -- in all
    held integer not null,            -- those that haven't been closed
    written boolean not null,
    deleted boolean not null,
    volume text collate "C",
    service text collate "C",
    user_name text collate "C",
    client text collate "C",
    command text collate "C",
    path text collate "C" not null
) with (fillfactor = 70, autovacuum_vacuum_scale_factor = 0.02);
-- No index holds a text of 4,000 bytes.
create index open_files_path on vorn_data.open_files (left(path, 500));
create index open_files_node on vorn_data.open_files (node);

-- Who has held files: a process on a day, with what was known of it. Days make users forgettable
-- without a touch on the intervals.
create table vorn_data.holders (
    id bigint primary key,
    day date not null,
    node integer not null,
    run integer not null,
    pid integer not null,
    process_start bigint,
    volume text collate "C",
    service text collate "C",
    user_name text collate "C",
    client text collate "C",
    command text collate "C"
);
create index holders_day on vorn_data.holders using brin (day) with (autosummarize = on);

-- Intervals that are over. Rows come once and are never changed; a month goes as a whole.
create table vorn_data.history (
    holder bigint not null,
    opened_at timestamptz not null,
    closed_at timestamptz not null check (closed_at >= opened_at),
    node integer not null,
    opens integer not null,
    began_before boolean not null,
    end_known boolean not null,
    written boolean not null,
    deleted boolean not null,
    path text collate "C" not null
) partition by range (closed_at);
create index history_path on vorn_data.history (hashtextextended(path, node), closed_at);
create index history_closed on vorn_data.history using brin (closed_at)
    with (pages_per_range = 32, autosummarize = on);

create table vorn_data.gaps (
    node integer not null references vorn_data.nodes,
    run integer not null references vorn_data.runs,
    kind text not null check (kind in ('missing', 'lost', 'incomplete', 'clock')),
    at_from timestamptz,
    at_to timestamptz not null,
    seq_from bigint not null,
    seq_to bigint not null,
    reason text
);
create index gaps_node on vorn_data.gaps (node, at_to);

create table vorn_data.refused (
    node text collate "C" not null,
    entry text not null,              -- the same for an entry that came twice
    heard timestamptz not null,
    reason text not null,
    fields jsonb not null,
    primary key (node, entry)
);
