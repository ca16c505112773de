// The orders dashboard: asks the server for the orders every second and
// updates the table in place, so a demo request shows up on stage at once.
// Rows are kept per order number and only changed where they differ: a page
// script that marks a row (class "spotlight") keeps its mark across updates.
(function () {
  const tbody = document.querySelector('#orders tbody');
  const rows = new Map(); // order number -> <tr>
  const newForMs = 8000;
  let lastSuccess = 0;

  function ago(ms) {
    const seconds = Math.max(0, Math.round(ms / 1000));
    if (seconds < 10) return 'just now';
    if (seconds < 60) return seconds + ' s ago';
    const minutes = Math.round(seconds / 60);
    if (minutes < 60) return minutes + ' min ago';
    const hours = Math.floor(minutes / 60);
    return hours + ' h ' + (minutes % 60) + ' min ago';
  }

  function setText(cell, text) {
    if (cell.textContent !== text) cell.textContent = text;
  }

  function rowFor(order) {
    let row = rows.get(order.number);
    if (row) return row;
    row = document.createElement('tr');
    row.innerHTML =
      '<td class="id"></td><td class="customer"></td><td class="col-item"></td><td class="num"></td>' +
      '<td class="num total"></td><td><span class="status"></span></td><td class="col-placed muted"></td>' +
      '<td class="col-channel muted"></td>';
    row.dataset.id = order.id;
    row.dataset.customer = order.customer;
    rows.set(order.number, row);
    return row;
  }

  function render(data) {
    const now = data.now;
    const seen = new Set();
    let previous = null;
    for (const order of data.orders) {
      seen.add(order.number);
      const row = rowFor(order);
      const cells = row.cells;
      setText(cells[0], order.id);
      setText(cells[1], order.customer);
      setText(cells[2], order.item);
      setText(cells[3], String(order.quantity));
      setText(cells[4], order.total);
      const status = cells[5].firstChild;
      setText(status, order.status);
      status.className = 'status status-' + order.status.toLowerCase();
      setText(cells[6], ago(now - order.createdAt));
      setText(cells[7], order.channel);
      row.classList.toggle('is-new', now - order.createdAt < newForMs);
      const wanted = previous ? previous.nextSibling : tbody.firstChild;
      if (wanted !== row) tbody.insertBefore(row, wanted);
      previous = row;
    }
    for (const [number, row] of rows) {
      if (!seen.has(number)) {
        row.remove();
        rows.delete(number);
      }
    }
    document.getElementById('empty').hidden = data.orders.length > 0;
    setText(document.getElementById('kpi-orders'), String(data.totals.orders));
    setText(document.getElementById('kpi-revenue'), data.totals.revenue);
    setText(document.getElementById('kpi-average'), data.totals.average);
    setText(document.getElementById('kpi-open'), String(data.totals.open));
  }

  function showLive(ok) {
    const live = document.getElementById('live');
    live.classList.toggle('offline', !ok);
    live.lastChild.textContent = ok ? 'Live' : 'Offline';
  }

  async function poll() {
    try {
      const response = await fetch('/api/orders', { cache: 'no-store' });
      if (!response.ok) throw new Error('HTTP ' + response.status);
      const data = await response.json();
      render(data);
      lastSuccess = Date.now();
      showLive(true);
    } catch (error) {
      showLive(false);
    }
    const updated = document.getElementById('updated');
    setText(updated, lastSuccess ? 'Today · updated ' + ago(Date.now() - lastSuccess) : 'Today · waiting for the server');
    setTimeout(poll, 1000);
  }

  async function showAccount() {
    const account = document.getElementById('account');
    try {
      const response = await fetch('/api/me', { cache: 'no-store' });
      const me = await response.json();
      if (me.signedIn) {
        const initials = me.name.split(' ').map(part => part[0] || '').join('').slice(0, 2).toUpperCase();
        account.innerHTML = '<span class="avatar"></span><span class="who"></span><a class="signout" href="/logout">Sign out</a>';
        account.querySelector('.avatar').textContent = initials;
        account.querySelector('.who').textContent = me.name;
        return;
      }
    } catch (error) {
      // Unreachable server: the live badge says so.
    }
    const next = encodeURIComponent(location.pathname + location.search);
    account.innerHTML = '<a class="button ghost" href="/login?next=' + next + '">Sign in</a>';
  }

  let bannerTimer = 0;
  function banner(text) {
    const element = document.getElementById('banner');
    element.textContent = text;
    element.hidden = false;
    clearTimeout(bannerTimer);
    bannerTimer = setTimeout(() => (element.hidden = true), 4000);
  }

  document.getElementById('quick-order').addEventListener('submit', async event => {
    event.preventDefault();
    const form = event.target;
    const body = {
      customer: form.customer.value.trim(),
      item: form.item.value,
      quantity: Number(form.quantity.value),
    };
    try {
      const response = await fetch('/api/orders', {
        method: 'POST',
        headers: { 'Content-Type': 'application/json' },
        body: JSON.stringify(body),
      });
      const answer = await response.json();
      banner(response.ok ? answer.message : answer.error);
    } catch (error) {
      banner('The server did not answer');
    }
  });

  showAccount();
  poll();
})();
