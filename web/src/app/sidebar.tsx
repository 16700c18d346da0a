import { formatNumber, t } from '../base/text.ts';
import { Spinner } from '../kit/data_view.tsx';
import { useStore } from '../kit/hooks.ts';
import { Icon, Mark } from '../kit/icon.tsx';
import { route } from '../shell/navigation.ts';
import { useBadges, type Badge } from './badges.ts';
import { views } from './views.ts';

export function Sidebar() {
  const current = useStore(route).view;
  const badges = useBadges();
  const groups = [...new Set(views.map(({ group }) => group))];
  return (
    <nav class="sidebar" aria-label={t('app.nav')}>
      <div class="sidebar-brand line">
        <Mark />
        <span>Varnel</span>
      </div>
      {groups.map((group) => (
        <div class={group ? 'sidebar-group' : 'sidebar-group sidebar-foot'}>
          {group && <p class="sidebar-heading">{t(`group.${group}`)}</p>}
          <ul>
            {views
              .filter((entry) => entry.group === group)
              .map(({ id }) => (
                <li key={id}>
                  <button
                    type="button"
                    class="sidebar-item line"
                    aria-current={id === current ? 'page' : undefined}
                    title={t(`view.${id}`)}
                    data-nav={id}
                    onClick={() => route.set({ view: id })}
                  >
                    <Icon name={id} />
                    <span>{t(`view.${id}`)}</span>
                    {badges[id] !== undefined && <NavBadge badge={badges[id]} />}
                  </button>
                </li>
              ))}
          </ul>
        </div>
      ))}
    </nav>
  );
}

function NavBadge({ badge }: { badge: NonNullable<Badge> }) {
  if (typeof badge === 'number') return <i class="nav-badge">{formatNumber(badge)}</i>;
  return (
    <i class="nav-badge">
      {badge === 'busy' ? <Spinner /> : <b aria-hidden="true">●</b>}
      <b class="hidden">{t(`nav.${badge}`)}</b>
    </i>
  );
}
