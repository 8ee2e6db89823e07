-- Months ahead, retention and expiry. The loader may call these; they run with the owner's rights.

create or replace function vorn_data.month_name(moment timestamptz) returns text language sql stable
    begin atomic
    select 'history_' || to_char(moment at time zone 'UTC', 'YYYY_MM');
    end;

create or replace function vorn_data.month_start(moment timestamptz) returns timestamptz language sql stable
    begin atomic
    select date_trunc('month', moment at time zone 'UTC') at time zone 'UTC';
    end;

create or replace function vorn_data.oldest_month() returns timestamptz language sql stable
    begin atomic
    select vorn_data.month_start(now() - make_interval(months => retention_months)) from vorn_data.settings;
    end;

-- Made aside and then attached: nobody who reads waits for it, nor it for them.
create or replace function vorn_data.make_month(moment timestamptz) returns boolean
    language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
    name text := vorn_data.month_name(moment);
    first timestamptz := vorn_data.month_start(moment);
begin
    if to_regclass('vorn_data.' || name) is not null then
        return false;
    end if;
    if first < vorn_data.oldest_month() or first > now() + interval '3 months' then
        raise exception 'no month is kept for %', moment;
    end if;
    execute format('create table vorn_data.%I (like vorn_data.history including all)', name);
    execute format('alter table vorn_data.history attach partition vorn_data.%I for values from (%L) to (%L)',
                   name, first, vorn_data.month_start(first + interval '40 days'));
    return true;
end $$;

-- Whoever reads a month that is to go is waited for shortly; the next call tries again.
create or replace function vorn_data.drop_months() returns integer
    language plpgsql security definer set search_path = pg_catalog, pg_temp set lock_timeout = '5s' as $$
declare
    name text;
    dropped integer := 0;
begin
    for name in select relname from pg_class
        where relnamespace = 'vorn_data'::regnamespace and relkind = 'r' and relname ~ '^history_\d{4}_\d\d$'
            and relname < vorn_data.month_name(vorn_data.oldest_month()) order by relname
    loop
        execute format('drop table vorn_data.%I', name);
        dropped := dropped + 1;
    end loop;
    return dropped;
exception when lock_not_available then
    return dropped;
end $$;

create or replace function vorn_data.maintain()
    returns table (months_made integer, months_dropped integer, expired bigint, removed bigint)
    language plpgsql security definer set search_path = pg_catalog, pg_temp as $$
declare
    kept vorn_data.settings;
    oldest timestamptz := vorn_data.oldest_month();
    counted bigint;
begin
    select * into kept from vorn_data.settings;
    select count(*) filter (where vorn_data.make_month(month)) into months_made
        from generate_series(vorn_data.month_start(now()), now() + interval '2 months', interval '1 month') month;
    months_dropped := vorn_data.drop_months();

    update vorn_data.holders set user_name = null, client = null
        where day < current_date - kept.personal_days and (user_name is not null or client is not null);
    get diagnostics expired = row_count;

    delete from vorn_data.holders where day < (oldest at time zone 'UTC')::date;
    get diagnostics removed = row_count;
    delete from vorn_data.refused where heard < now() - make_interval(days => kept.refused_days);
    get diagnostics counted = row_count;
    removed := removed + counted;
    delete from vorn_data.gaps where at_to < oldest;
    get diagnostics counted = row_count;
    removed := removed + counted;
    delete from vorn_data.runs r where ended_at < oldest
        and not exists (select from vorn_data.gaps g where g.run = r.id);
    get diagnostics counted = row_count;
    removed := removed + counted;
    return next;
end $$;
