-- The questions, as functions. They run with the rights of this schema's owner, as the views do, and only read.
-- plpgsql, because it plans each for the values that are asked for.

-- Who has something open in a folder (or the file of that name), by what has been heard.
create function vorn.who_has(folder text)
    returns table (node text, user_name text, client text, service text, command text, pid integer, path text,
                   since timestamptz, began_before boolean, silent boolean)
    language plpgsql stable security definer
    set search_path = pg_catalog, pg_temp set plan_cache_mode = force_custom_plan as $$
#variable_conflict use_column
begin
    return query
    select o.node, o.user_name, o.client, o.service, o.command, o.pid, o.path, o.opened_at, o.began_before, o.silent
    from (select left(rtrim(who_has.folder, '/'), 500) as head) f
    cross join lateral (
        -- "0" is what comes after "/": the bounds of everything below, as the index has it.
        select * from vorn.open_now x
        where left(x.path, 500) >= f.head and left(x.path, 500) < f.head || '0'
            and (x.path = rtrim(who_has.folder, '/') or starts_with(x.path, rtrim(who_has.folder, '/') || '/'))) o
    order by o.node, o.path, o.opened_at;
end $$;

-- Who had a file open at a moment. Not certain is what was closed later and whose opening nobody told: it
-- was open then only if it had been opened by then.
create function vorn.who_had(path text, moment timestamptz, on_node text default null)
    returns table (node text, user_name text, client text, service text, command text, pid integer,
                   opened_at timestamptz, closed_at timestamptz, began_before boolean, end_known boolean,
                   written boolean, certain boolean)
    language plpgsql stable security definer
    set search_path = pg_catalog, pg_temp set plan_cache_mode = force_custom_plan as $$
#variable_conflict use_column
begin
    return query
    select n.name, w.user_name, w.client, w.service, w.command, w.pid, h.opened_at, h.closed_at, h.began_before,
        h.end_known, h.written, h.opened_at <= who_had.moment
    from vorn_data.nodes n
    join vorn_data.history h
        on hashtextextended(h.path, h.node) = hashtextextended(who_had.path, n.id)
        and h.path = who_had.path and h.node = n.id
    join vorn_data.holders w on w.id = h.holder
    left join vorn_data.runs r on r.id = w.run
    where (who_had.on_node is null or n.name = who_had.on_node) and h.closed_at >= who_had.moment
        and (h.opened_at <= who_had.moment
            or h.began_before and h.opened_at = h.closed_at and r.started_at <= who_had.moment)
    union all
    select n.name, o.user_name, o.client, o.service, o.command, o.pid, o.opened_at, null, o.began_before, false,
        o.written, true
    from vorn_data.open_files o
    join vorn_data.nodes n on n.id = o.node
    where left(o.path, 500) = left(who_had.path, 500) and o.path = who_had.path and o.opened_at <= who_had.moment
        and (who_had.on_node is null or n.name = who_had.on_node)
    order by 7, 1;
end $$;

-- Whether anybody watched a node at a moment, and what wasn't told around it.
create function vorn.watched(moment timestamptz, on_node text default null)
    returns table (node text, watched boolean, volumes text[], unwatched text[], gaps bigint)
    language plpgsql stable security definer
    set search_path = pg_catalog, pg_temp set plan_cache_mode = force_custom_plan as $$
#variable_conflict use_column
begin
    return query
    select n.name, r.id is not null, r.volumes, r.unwatched,
        (select count(*) from vorn_data.gaps g where g.node = n.id and g.run = r.id and
            g.at_to >= watched.moment - interval '1 minute' and coalesce(g.at_from, g.at_to) <= watched.moment)
    from vorn_data.nodes n
    left join lateral (select * from vorn_data.runs x where x.node = n.id and x.started_at <= watched.moment
                       and coalesce(x.ended_at, x.last_at) >= watched.moment
                       order by x.started_at desc limit 1) r on true
    where watched.on_node is null or n.name = watched.on_node
    order by n.name;
end $$;

-- Users of a folder by their files and the hours that they held them, in a span of time.
create function vorn.top_users(folder text, since timestamptz, until timestamptz, rows integer default 20)
    returns table (user_name text, files bigint, opens bigint, hours numeric, last_use timestamptz)
    language plpgsql stable security definer
    set search_path = pg_catalog, pg_temp set plan_cache_mode = force_custom_plan as $$
#variable_conflict use_column
begin
    return query
    select u.user_name, count(distinct hashtextextended(u.path, u.node)), sum(u.opens),
        round((sum(extract(epoch from least(u.closed_at, top_users.until) - greatest(u.opened_at, top_users.since)))
               / 3600)::numeric, 1),
        max(least(u.closed_at, top_users.until))
    from (select w.user_name, h.path, h.node, h.opens, h.opened_at, h.closed_at
          from vorn_data.history h join vorn_data.holders w on w.id = h.holder
          where h.closed_at >= top_users.since and h.opened_at < top_users.until
              and starts_with(h.path, rtrim(top_users.folder, '/') || '/')
          union all
          select o.user_name, o.path, o.node, o.opens, o.opened_at, now()
          from vorn_data.open_files o
          where o.opened_at < top_users.until and now() >= top_users.since
              and starts_with(o.path, rtrim(top_users.folder, '/') || '/')) u
    group by u.user_name
    order by 2 desc, 3 desc, 4 desc
    limit top_users.rows;
end $$;

-- Who wrote files of a folder, or these very files, in a span of time.
create function vorn.who_changed(since timestamptz, until timestamptz, folder text default null,
                                 paths text[] default null)
    returns table (node text, user_name text, client text, service text, command text, files bigint,
                   first_change timestamptz, last_change timestamptz)
    language plpgsql stable security definer
    set search_path = pg_catalog, pg_temp set plan_cache_mode = force_custom_plan as $$
#variable_conflict use_column
begin
    return query
    select n.name, w.user_name, w.client, w.service, w.command, count(distinct h.path), min(h.closed_at),
        max(h.closed_at)
    from vorn_data.history h
    join vorn_data.holders w on w.id = h.holder
    join vorn_data.nodes n on n.id = h.node
    where h.written and h.closed_at >= who_changed.since and h.closed_at < who_changed.until
        and (who_changed.folder is null or starts_with(h.path, rtrim(who_changed.folder, '/') || '/'))
        and (who_changed.paths is null or h.path = any(who_changed.paths))
    group by 1, 2, 3, 4, 5
    order by 6 desc, 1, 2;
end $$;
