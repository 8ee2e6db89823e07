-- What is asked. Schema vorn is dropped and made anew by each setup; it holds no data.

create view vorn.settings as
    select retention_months, personal_days, refused_days, journal_days, heartbeat from vorn_data.settings;

-- A node that has missed three signs of life is silent, whatever it has open.
create view vorn.nodes as
    select n.name as node,
        case when r.id is null then 'unknown'
            when r.stopped then 'stopped'
            when n.last_heard < now() - 3 * s.heartbeat or n.last_at < now() - 3 * s.heartbeat then 'silent'
            else 'watching' end as state,
        n.last_heard, n.last_at, r.run, r.started_at, r.volumes, r.unwatched, r.events,
        (select count(*) from vorn_data.open_files o where o.node = n.id) as open_files,
        (select coalesce(sum(g.seq_to - g.seq_from + 1), 0) from vorn_data.gaps g
         where g.node = n.id and g.kind = 'missing') as missing,
        (select count(*) from vorn_data.gaps g where g.node = n.id and g.kind = 'lost') as lost,
        n.refused
    from vorn_data.nodes n
    cross join vorn_data.settings s
    left join lateral (select * from vorn_data.runs where node = n.id
                       order by started_at desc, id desc limit 1) r on true;

create view vorn.runs as
    select n.name as node, r.run, r.started_at, r.last_at, r.last_seq, r.events, r.repeated, r.pathless,
        r.ended_at, r.stopped, r.volumes, r.unwatched
    from vorn_data.runs r join vorn_data.nodes n on n.id = r.node;

create view vorn.open_now as
    select n.name as node, r.run, o.pid, o.process_start, o.volume, o.service, o.user_name, o.client, o.command,
        o.path, o.opened_at, o.began_before, o.opens, o.written, o.deleted, n.last_heard,
        n.last_heard < now() - 3 * s.heartbeat or n.last_at < now() - 3 * s.heartbeat as silent
    from vorn_data.open_files o
    join vorn_data.nodes n on n.id = o.node
    join vorn_data.runs r on r.id = o.run
    cross join vorn_data.settings s;

-- closed_at is null while the file is open. Where end_known is false the file was held until then at
-- least, as far as was told; where began_before is true it was opened before opened_at.
create view vorn.intervals as
    select n.name as node, r.run, w.pid, w.process_start, w.volume, w.service, w.user_name, w.client, w.command,
        h.path, h.opened_at, h.closed_at, h.began_before, h.end_known, h.written, h.deleted, h.opens,
        w.id as holder
    from vorn_data.history h
    join vorn_data.holders w on w.id = h.holder
    join vorn_data.nodes n on n.id = h.node
    left join vorn_data.runs r on r.id = w.run
    union all
    select n.name, r.run, o.pid, o.process_start, o.volume, o.service, o.user_name, o.client, o.command,
        o.path, o.opened_at, null, o.began_before, false, o.written, o.deleted, o.opens, null
    from vorn_data.open_files o
    join vorn_data.nodes n on n.id = o.node
    join vorn_data.runs r on r.id = o.run;

create view vorn.gaps as
    select n.name as node, r.run, g.kind, g.at_from, g.at_to, g.seq_from, g.seq_to, g.reason
    from vorn_data.gaps g
    join vorn_data.nodes n on n.id = g.node
    join vorn_data.runs r on r.id = g.run;

create view vorn.refused as select node, heard, reason, fields from vorn_data.refused;
